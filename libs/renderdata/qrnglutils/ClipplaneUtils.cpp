#include "qrnglutils/ClipplaneUtils.h"

#include "qrnsgutils/InfoUtils.h"

#include "qrngl/GL.h"
#include "qrnmath/PlaneUtils.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace qrnglutils {

using qrnmath::Vec3;
using qrnmath::Vec4;

Vec4 ClipplaneUtils::createClipPlane(const qrnsg::BBox& box, const Vec3& normal,
                                     std::shared_ptr<qrnsg::Mesh>& mesh,
                                     std::shared_ptr<qrnsg::Polyline>& polyline) {
    if (!mesh)
        mesh = std::make_shared<qrnsg::Mesh>();
    if (!polyline)
        polyline = std::make_shared<qrnsg::Polyline>();
    *mesh = qrnsg::Mesh();
    *polyline = qrnsg::Polyline();
    if (box.isEmpty() || normal.length() <= 0.0f)
        return Vec4(0.0f, 0.0f, 0.0f, 0.0f);
    const Vec3 n = normal.normalized();
    const Vec3 centre = box.center();
    const Vec4 plane = qrnmath::PlaneUtils::fromPointNormal(centre, n);
    // Two axes in the plane: u along the box axis least aligned with the normal.
    int least = 0;
    for (int i = 1; i < 3; ++i)
        if (std::fabs(n[i]) < std::fabs(n[least]))
            least = i;
    Vec3 axis(0.0f, 0.0f, 0.0f);
    axis[least] = 1.0f;
    const Vec3 u = (axis - n * n.dot(axis)).normalized();
    const Vec3 v = qrnmath::cross(n, u);
    // The box's corners seen along the normal bound the quad.
    float lo[2] = {std::numeric_limits<float>::max(), std::numeric_limits<float>::max()};
    float hi[2] = {-lo[0], -lo[1]};
    for (int c = 0; c < 8; ++c) {
        const Vec3 corner((c & 1) ? box.max()[0] : box.min()[0],
                          (c & 2) ? box.max()[1] : box.min()[1],
                          (c & 4) ? box.max()[2] : box.min()[2]);
        const Vec3 d = corner - centre;
        const float s[2] = {d.dot(u), d.dot(v)};
        for (int k = 0; k < 2; ++k) {
            lo[k] = std::min(lo[k], s[k]);
            hi[k] = std::max(hi[k], s[k]);
        }
    }
    const float margin = 0.05f * std::max(box.diagonal(), 1e-6f);
    for (int k = 0; k < 2; ++k) {
        lo[k] -= margin;
        hi[k] += margin;
    }
    const Vec3 corners[4] = {centre + u * lo[0] + v * lo[1], centre + u * hi[0] + v * lo[1],
                             centre + u * hi[0] + v * hi[1], centre + u * lo[0] + v * hi[1]};
    // Wound counter-clockwise seen from the side the normal points away from.
    mesh->vertices = {corners[0], corners[3], corners[2], corners[1]};
    mesh->normals.assign(4, -n);
    mesh->indices = {0, 1, 2, 0, 2, 3};
    polyline->addStrip({corners[0], corners[1], corners[2], corners[3], corners[0]});
    return plane;
}

void ClipplaneUtils::clearProfileData(const std::shared_ptr<qrngl::SCClipping>& clipping) {
    if (!clipping)
        return;
    clipping->planeClipData.clear();
    clipping->profileHierarchy.clear();
    clipping->segmentPlane.clear();
    clipping->segmentNode.clear();
    clipping->segmentIndex.clear();
    clipping->selectedProfile = -1;
    clipping->firstProfileName = 0;
}

float ClipplaneUtils::getOffset(const qrngl::SCClipping& clipping) {
    if (clipping.planes.empty() || clipping.pointsOnPlane.empty())
        return 0.0f;
    const Vec4& plane = clipping.planes.front();
    const Vec3 n(plane[0], plane[1], plane[2]);
    const float length = n.length();
    if (length <= 0.0f)
        return 0.0f;
    // The point the plane was made through lies -offset along the normal from it now.
    float offset = -(n.dot(clipping.pointsOnPlane.front()) + plane[3]) / length;
    if (clipping.flipped)
        offset = -offset;
    // An axis plane's offset counts along its axis, whichever way its normal was turned.
    static const int axes[3] = {2, 0, 1};
    if (!clipping.planeTypes.empty() && clipping.planeTypes.front() <= qrngl::SCClipping::ZX) {
        const float along = n[axes[clipping.planeTypes.front()]] * (clipping.flipped ? -1.f : 1.f);
        if (along < 0.0f)
            offset = -offset;
    }
    return offset;
}

bool ClipplaneUtils::getOffsetDist(const std::shared_ptr<qrngl::SCClipping>& clipping,
                                   const std::shared_ptr<qrnsg::SCInfo>& info, std::wstring& text,
                                   int decimals) {
    text.clear();
    if (!clipping || !clipping->hasPlane())
        return false;
    float offset = getOffset(*clipping);
    const auto unit = info ? info->lengthUnit : qrnsg::SCInfo::MILLIMETRE;
    if (info)
        offset = static_cast<float>(qrnsgutils::InfoUtils::toUnit(offset, *info, unit));
    const int places = std::clamp(decimals, 0, 9);
    // No "-0.00".
    if (std::fabs(offset) < 0.5f * std::pow(10.0f, static_cast<float>(-places)))
        offset = 0.0f;
    wchar_t number[64];
    std::swprintf(number, 64, L"%.*f", places, static_cast<double>(offset));
    text = std::wstring(L"Offset: ") + number + L" " + qrnsgutils::InfoUtils::getUnitName(unit);
    return true;
}

bool ClipplaneUtils::anyClipPlaneOn() {
    GLint planes = 0;
    glGetIntegerv(GL_MAX_CLIP_PLANES, &planes);
    for (GLint i = 0; i < planes; ++i)
        if (glIsEnabled(static_cast<GLenum>(GL_CLIP_PLANE0 + i)))
            return true;
    return false;
}

bool ClipplaneUtils::toggleClipPlaneState(bool on) {
    const bool was = glIsEnabled(GL_CLIP_PLANE0) == GL_TRUE;
    if (on)
        glEnable(GL_CLIP_PLANE0);
    else
        glDisable(GL_CLIP_PLANE0);
    return was;
}

} // namespace qrnglutils
