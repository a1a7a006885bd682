#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/PartEntities.h"
#include "qrnsgutils/qrnsgutils_export.h"

#include <vector>

namespace qrnsgutils {

// One picked entity as it lies in the world: the analytic description where the reader knew
// one (already placed: origin, axis and radius in world coordinates) and its tessellation.
struct WorldEntity {
    enum Kind : unsigned char { NONE, POINT, EDGE, FACE };
    Kind kind = NONE;
    qrnmath::Vec3 point;                  // POINT
    qrnsg::PartEntities::Curve curve;     // EDGE (type NONE when unknown)
    std::vector<qrnmath::Vec3> polyline;  // EDGE: its points in order
    qrnsg::PartEntities::Surface surface; // FACE (type NONE when unknown)
    std::vector<qrnmath::Vec3> triangles; // FACE: three corners per triangle
};

struct MeasureResult {
    bool valid = false;
    float value = 0.0f; // length, or angle in radians, or area
    qrnmath::Vec3 a, b; // distance: closest points on the first and the second entity
    bool exact = false; // from the analytic description rather than the tessellation
};

// What the measure tool reads off picked entities. Distances are true minimum distances
// between the bounded entities, found on the tessellation and then made exact from the
// analytic description where the closest points lie inside the entities (the analytic foot
// lies on the tessellation, within its chord error); elsewhere they stay as tessellated.
class QRNSGUTILS_EXPORT EntityMeasure {
public:
    // Minimum distance between two entities of any kinds (point, edge, face) in either order,
    // with the closest points (a on the first, b on the second).
    static MeasureResult distance(const WorldEntity& first, const WorldEntity& second);
    // The angle between two edges (their directions; lines, or the chord of other curves at
    // their closest points is fine) or two faces (normals of planes; axes of cylinders/cones),
    // or an edge and a face; in radians within [0, pi/2] for lines/axes, [0, pi] for two planes'
    // normals. Two plane faces give the angle between their outward normals: pi/2 for a box's
    // adjacent faces, pi for its opposite faces, 0 for faces looking the same way. Any other pair
    // is unsigned: between two lines or axes, and between a line or axis and a plane (0 when it
    // runs along the plane, pi/2 along its normal). Any other face (unknown, sphere) counts as a
    // plane with the normal of its triangle nearest the other entity. a and b: the closest points.
    // exact: both directions come from the analytic description.
    static MeasureResult angle(const WorldEntity& first, const WorldEntity& second);
    // Centre, axis and radius of a circle or arc edge, or of a cylindrical face (centre: the
    // axis point nearest the face's triangles' centroid), or a sphere. Analytic when known; for
    // an edge of unknown type whose points lie on a circle, fitted from three well-spread points.
    static bool circle(const WorldEntity& entity, qrnmath::Vec3& centre, qrnmath::Vec3& axis,
                       float& radius, bool* exact = nullptr);
    // polyline length; exact for lines, circles (full 2 pi r when closed) and arcs
    static float length(const WorldEntity& edge);
    static float area(const WorldEntity& face);                        // sum of triangle areas
    static float tapeLength(const std::vector<qrnmath::Vec3>& points); // sum of segment lengths
    // The circle through three points; false when they are (nearly) collinear.
    static bool circleThrough(const qrnmath::Vec3& p0, const qrnmath::Vec3& p1,
                              const qrnmath::Vec3& p2, qrnmath::Vec3& centre, float& radius);
};

} // namespace qrnsgutils
