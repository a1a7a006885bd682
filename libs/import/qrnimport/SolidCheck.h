#pragma once

#include "qrnsg/Mesh.h"

#include <vector>

namespace qrnimport {

// Tells whether a part's triangles bound a solid: once coincident corners are joined, every
// edge is shared by exactly two triangles that run along it in opposite directions, and the
// enclosed volume is positive (the faces point outwards). Such a part shows no back face
// unless it is cut open.
class SolidCheck {
public:
    static bool closed(const std::vector<qrnsg::Mesh>& meshes);
};

} // namespace qrnimport
