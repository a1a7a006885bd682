#include "qrngl/frame/ClusterCuller.h"

#include "qrngl/GL.h"
#include "qrnmath/MatrixUtils.h"

#include <cmath>

namespace qrngl {

using qrnmath::Mat4;
using qrnmath::MatrixUtils;
using qrnmath::Vec3;

namespace {

float dot(const Vec3& a, const Vec3& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

// Whether the upper 3x3 of a matrix only turns and scales evenly (mirrored or not): the one
// kind of placement under which angles, and so normal cones, keep.
bool keepsAngles(const Mat4& m) {
    const float* a = m.data();
    const Vec3 x(a[0], a[1], a[2]), y(a[4], a[5], a[6]), z(a[8], a[9], a[10]);
    const float xx = dot(x, x), yy = dot(y, y), zz = dot(z, z);
    const float tolerance = 1e-4f * xx;
    return std::abs(xx - yy) <= tolerance && std::abs(xx - zz) <= tolerance &&
           std::abs(dot(x, y)) <= tolerance && std::abs(dot(y, z)) <= tolerance &&
           std::abs(dot(x, z)) <= tolerance;
}

} // namespace

void ClusterCuller::begin() {
    glGetFloatv(GL_PROJECTION_MATRIX, m_projection.data());
    glGetFloatv(GL_MODELVIEW_MATRIX, m_view.data());
}

std::size_t ClusterCuller::ranges(const qrnsg::Mesh& mesh, const Mat4* transform,
                                  std::vector<IStripEntry::Range>& out) const {
    out.clear();
    const std::size_t all = mesh.triangleCount();
    if (mesh.clusters.empty()) {
        out.push_back({0, static_cast<unsigned int>(all)});
        return all;
    }
    const Mat4 modelView = transform ? MatrixUtils::multiply(m_view, *transform) : m_view;
    // The planes of the view in the mesh's own coordinates: sums and differences of the rows
    // of projection times model-view, each with its normal's length.
    const Mat4 clip = MatrixUtils::multiply(m_projection, modelView);
    const float* c = clip.data();
    float planes[6][5];
    for (int p = 0; p < 6; ++p) {
        const int row = p / 2;
        const float sign = p % 2 ? -1.0f : 1.0f;
        for (int k = 0; k < 4; ++k)
            planes[p][k] = c[4 * k + 3] + sign * c[4 * k + row];
        planes[p][4] = std::sqrt(planes[p][0] * planes[p][0] + planes[p][1] * planes[p][1] +
                                 planes[p][2] * planes[p][2]);
    }
    // The eye in the mesh's coordinates, or the direction it looks in for a parallel view.
    Mat4 inverse;
    const bool cones = keepsAngles(modelView) && MatrixUtils::invert(modelView, inverse);
    const bool parallel = m_projection.data()[11] == 0.0f;
    Vec3 eye, look;
    if (cones) {
        eye = MatrixUtils::transformPoint(inverse, Vec3(0.0f, 0.0f, 0.0f));
        look = MatrixUtils::transformVector(inverse, Vec3(0.0f, 0.0f, -1.0f));
        const float length = std::sqrt(dot(look, look));
        look = Vec3(look[0] / length, look[1] / length, look[2] / length);
    }
    std::size_t drawn = 0;
    for (const auto& cluster : mesh.clusters) {
        bool seen = true;
        for (int p = 0; p < 6 && seen; ++p)
            seen = planes[p][0] * cluster.centre[0] + planes[p][1] * cluster.centre[1] +
                       planes[p][2] * cluster.centre[2] + planes[p][3] >=
                   -cluster.radius * planes[p][4];
        if (seen && cones && cluster.coneCutoff < 1.0f) {
            if (parallel) {
                seen = dot(look, cluster.coneAxis) < cluster.coneCutoff;
            } else {
                const Vec3 to(cluster.coneApex[0] - eye[0], cluster.coneApex[1] - eye[1],
                              cluster.coneApex[2] - eye[2]);
                const float length = std::sqrt(dot(to, to));
                seen = length <= 0.0f || dot(to, cluster.coneAxis) < cluster.coneCutoff * length;
            }
        }
        if (!seen)
            continue;
        drawn += cluster.triangleCount;
        if (!out.empty() && out.back().first + out.back().count == cluster.firstTriangle)
            out.back().count += cluster.triangleCount;
        else
            out.push_back({cluster.firstTriangle, cluster.triangleCount});
    }
    return drawn;
}

} // namespace qrngl
