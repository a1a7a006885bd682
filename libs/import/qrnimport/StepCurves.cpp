#include "qrnimport/StepCurves.h"

#include "qrnimport/OcctUtils.h"

#include <GCPnts_TangentialDeflection.hxx>
#include <GeomAdaptor_Curve.hxx>
#include <Precision.hxx>
#include <StepGeom_CartesianPoint.hxx>
#include <StepGeom_Polyline.hxx>
#include <StepToGeom.hxx>

#include <cmath>

namespace qrnimport {

using qrnmath::Vec3;

bool StepCurves::points(const Handle(StepGeom_Curve) & curve, double scale, double deflection,
                        std::vector<Vec3>& out) {
    out.clear();
    if (auto polyline = Handle(StepGeom_Polyline)::DownCast(curve)) {
        const auto& points = polyline->Points();
        for (int i = 1; !points.IsNull() && i <= points->Length(); ++i) {
            const auto& p = points->Value(i);
            if (p.IsNull() || p->NbCoordinates() < 2)
                continue;
            out.emplace_back(
                static_cast<float>(p->CoordinatesValue(1) * scale),
                static_cast<float>(p->CoordinatesValue(2) * scale),
                static_cast<float>(p->NbCoordinates() > 2 ? p->CoordinatesValue(3) * scale : 0.0));
        }
        return out.size() >= 2;
    }
    // Other curves come in the model's unit from the reader's own conversion.
    const Handle(Geom_Curve) made = curve.IsNull() ? nullptr : StepToGeom::MakeCurve(curve);
    if (made.IsNull())
        return false;
    GeomAdaptor_Curve adaptor(made);
    if (Precision::IsInfinite(adaptor.FirstParameter()) ||
        Precision::IsInfinite(adaptor.LastParameter()))
        return false;
    GCPnts_TangentialDeflection sampler(adaptor, 0.1, deflection, 2);
    for (int i = 1; i <= sampler.NbPoints(); ++i)
        out.push_back(OcctUtils::toVec3(sampler.Value(i).XYZ()));
    return out.size() >= 2;
}

std::size_t StepCurves::fill(const std::vector<Vec3>& outline, qrnsg::Mesh& mesh) {
    std::vector<Vec3> polygon = outline;
    if (polygon.size() > 1 && polygon.front().distance(polygon.back()) <= 1e-9f)
        polygon.pop_back();
    if (polygon.size() < 3)
        return 0;
    // Newell's normal: the polygon's plane, and which way round it goes.
    Vec3 normal(0, 0, 0);
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Vec3& a = polygon[i];
        const Vec3& b = polygon[(i + 1) % polygon.size()];
        normal = normal + Vec3((a[1] - b[1]) * (a[2] + b[2]), (a[2] - b[2]) * (a[0] + b[0]),
                               (a[0] - b[0]) * (a[1] + b[1]));
    }
    if (normal.length() <= 0.0f)
        return 0;
    normal = normal.normalized();
    // Ears cut off one by one: a corner that turns the polygon's way with no other corner
    // inside its triangle.
    std::vector<std::size_t> left(polygon.size());
    for (std::size_t i = 0; i < left.size(); ++i)
        left[i] = i;
    auto turns = [&](const Vec3& a, const Vec3& b, const Vec3& c) {
        return qrnmath::cross(b - a, c - b).dot(normal);
    };
    auto inside = [&](const Vec3& p, const Vec3& a, const Vec3& b, const Vec3& c) {
        return turns(a, b, p) >= 0.0f && turns(b, c, p) >= 0.0f && turns(c, a, p) >= 0.0f;
    };
    std::size_t added = 0;
    const auto first = static_cast<unsigned int>(mesh.vertices.size());
    for (const Vec3& p : polygon) {
        mesh.vertices.push_back(p);
        mesh.normals.push_back(normal);
    }
    for (std::size_t guard = 0; left.size() > 2 && guard < polygon.size() * polygon.size();
         ++guard) {
        bool cut = false;
        for (std::size_t k = 0; k < left.size() && !cut; ++k) {
            const std::size_t i = left[(k + left.size() - 1) % left.size()], j = left[k],
                              l = left[(k + 1) % left.size()];
            const Vec3 &a = polygon[i], &b = polygon[j], &c = polygon[l];
            if (turns(a, b, c) <= 0.0f)
                continue;
            bool empty = true;
            for (std::size_t m : left)
                if (m != i && m != j && m != l && inside(polygon[m], a, b, c))
                    empty = false;
            if (!empty)
                continue;
            mesh.indices.insert(mesh.indices.end(), {first + static_cast<unsigned int>(i),
                                                     first + static_cast<unsigned int>(j),
                                                     first + static_cast<unsigned int>(l)});
            ++added;
            left.erase(left.begin() + static_cast<std::ptrdiff_t>(k));
            cut = true;
        }
        if (!cut)
            break; // not a simple polygon: what could be cut stays
    }
    return added;
}

} // namespace qrnimport
