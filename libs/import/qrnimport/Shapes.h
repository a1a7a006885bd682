#pragma once

#include "qrnimport/qrnimport_export.h"
#include "qrnsg/Mesh.h"
#include "qrnsg/Polyline.h"

namespace qrnimport {

// Simple solids as meshes with normals, and their feature edges, for built-in scenes and
// generated test and benchmark models.
class QRNIMPORT_EXPORT Shapes {
public:
    static qrnsg::Mesh box(const qrnmath::Vec3& min, const qrnmath::Vec3& max);
    static qrnsg::Polyline boxEdges(const qrnmath::Vec3& min, const qrnmath::Vec3& max);
    // Along +Z from the base centre; segments around; capped.
    static qrnsg::Mesh cylinder(const qrnmath::Vec3& base, float radius, float height,
                                int segments);
    static qrnsg::Polyline cylinderEdges(const qrnmath::Vec3& base, float radius, float height,
                                         int segments);
    // A UV sphere of rings x segments quads.
    static qrnsg::Mesh sphere(const qrnmath::Vec3& center, float radius, int rings, int segments);
};

} // namespace qrnimport
