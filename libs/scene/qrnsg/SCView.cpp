#include "qrnsg/SCView.h"

#include "qrnmath/MatrixUtils.h"

namespace qrnsg {

using qrnmath::Mat4;
using qrnmath::Vec3;

namespace {

// The rotation of a camera looking along direction with up as near as can be: its rows are
// the world vectors of the view's right, up and backwards.
Mat4 looking(const Vec3& direction, const Vec3& up) {
    const Vec3 d = direction.normalized();
    const Vec3 r = qrnmath::cross(d, up).normalized();
    const Vec3 u = qrnmath::cross(r, d);
    Mat4 m = qrnmath::MatrixUtils::identity();
    for (int i = 0; i < 3; ++i) {
        m[4 * i] = r[i];
        m[4 * i + 1] = u[i];
        m[4 * i + 2] = -d[i];
    }
    return m;
}

} // namespace

SCView::SCView() : Schema(SCHEMA_VIEW) {
    for (int i = 0; i < ORIENTATION_COUNT; ++i)
        orientations[static_cast<std::size_t>(i)] = standardRotation(static_cast<ORIENTATION>(i));
}

std::shared_ptr<Schema> SCView::clone() const {
    return std::make_shared<SCView>(*this);
}

void SCView::clear() {
    *this = SCView();
}

int SCView::find(const std::wstring& name) const {
    for (std::size_t i = 0; i < views.size(); ++i)
        if (views[i].name == name)
            return static_cast<int>(i);
    return -1;
}

Mat4 SCView::rotation(ORIENTATION orientation) const {
    const int i = static_cast<int>(orientation);
    if (i < 0 || i >= ORIENTATION_COUNT)
        return qrnmath::MatrixUtils::identity();
    return orientations[static_cast<std::size_t>(i)];
}

Mat4 SCView::standardRotation(ORIENTATION orientation) {
    const Vec3 z(0.0f, 0.0f, 1.0f);
    switch (orientation) {
    case ISOMETRIC:
        return looking(Vec3(-1.0f, 1.0f, -1.0f), z);
    case FRONT:
        return looking(Vec3(0.0f, 1.0f, 0.0f), z);
    case BACK:
        return looking(Vec3(0.0f, -1.0f, 0.0f), z);
    case LEFT:
        return looking(Vec3(1.0f, 0.0f, 0.0f), z);
    case RIGHT:
        return looking(Vec3(-1.0f, 0.0f, 0.0f), z);
    case TOP: // front edge at the bottom of the view
        return looking(Vec3(0.0f, 0.0f, -1.0f), Vec3(0.0f, 1.0f, 0.0f));
    case BOTTOM:
        return looking(Vec3(0.0f, 0.0f, 1.0f), Vec3(0.0f, -1.0f, 0.0f));
    case ISOMETRIC_FRONT_LEFT:
        return looking(Vec3(1.0f, 1.0f, -1.0f), z);
    case ISOMETRIC_BACK_RIGHT:
        return looking(Vec3(-1.0f, -1.0f, -1.0f), z);
    case ISOMETRIC_BACK_LEFT:
        return looking(Vec3(1.0f, -1.0f, -1.0f), z);
    default:
        return qrnmath::MatrixUtils::identity();
    }
}

} // namespace qrnsg
