#pragma once

#include "qrnmath/Tuple.h"

#include <vector>

namespace qrnsg {

// What a user can point at on one part: its faces, edges and vertices, each by a stable
// index, with the analytic description the reader knew. The geometry stays merged for
// drawing: a face is a triangle range of one of the part's meshes, an edge one strip of the
// part's polyline, and the vertices are the points of the part's point set in index order.
struct PartEntities {
    struct Surface {
        enum Type : unsigned char { NONE, PLANE, CYLINDER, CONE, SPHERE, TORUS, OTHER };
        Type type = NONE;
        qrnmath::Vec3 origin;     // plane: a point on it; others: on the axis (sphere: centre)
        qrnmath::Vec3 axis;       // plane: its outward normal; others: the axis direction
        float radius = 0.0f;      // cylinder, sphere; torus: major; cone: at the origin
        float minorRadius = 0.0f; // torus
        float halfAngle = 0.0f;   // cone, radians
    };
    struct Curve {
        enum Type : unsigned char { NONE, LINE, CIRCLE, ARC, OTHER };
        Type type = NONE;
        qrnmath::Vec3 origin; // line: its start; circle and arc: the centre
        qrnmath::Vec3 axis;   // line: its unit direction; circle and arc: the normal
        float radius = 0.0f;
        float length = 0.0f;
    };
    struct Face {
        int mesh = 0; // the part's mesh (by its place in the part) holding the triangles
        unsigned int firstTriangle = 0;
        unsigned int triangleCount = 0;
        Surface surface;
    };
    struct Edge {
        unsigned int strip = 0; // the strip of the part's polyline
        Curve curve;
        int vertices[2] = {-1, -1}; // its end vertices; one for a closed edge
        int faces[2] = {-1, -1};    // the faces it bounds; -1 where it bounds fewer
    };

    std::vector<Face> faces;
    std::vector<Edge> edges;
    std::vector<qrnmath::Vec3> vertices;

    bool empty() const { return faces.empty() && edges.empty() && vertices.empty(); }
};

} // namespace qrnsg
