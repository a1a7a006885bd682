#pragma once
// Not part of the library's interface: the curves of a STEP file's annotations as points, and
// the areas they close as triangles.

#include "qrnmath/Tuple.h"
#include "qrnsg/Mesh.h"

#include <StepGeom_Curve.hxx>

#include <vector>

namespace qrnimport {

class StepCurves {
public:
    // A curve's points in the model's unit: a polyline's own (scaled by `scale`, as the reader
    // leaves them), any other curve sampled within `deflection`. False for a curve the reader
    // cannot make (unbounded, unknown).
    static bool points(const Handle(StepGeom_Curve) & curve, double scale, double deflection,
                       std::vector<qrnmath::Vec3>& out);
    // The simple polygon `outline` (closed or not) as triangles in its plane, added to `mesh`
    // with the plane's normal; returns the number of triangles added.
    static std::size_t fill(const std::vector<qrnmath::Vec3>& outline, qrnsg::Mesh& mesh);
};

} // namespace qrnimport
