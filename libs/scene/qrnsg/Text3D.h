#pragma once

#include "qrnmath/MatrixUtils.h"
#include "qrnmath/Tuple.h"

#include <string>

namespace qrnsg {

// A text drawn as glyph outlines in the scene: anchored at a point, turned by the inverse of its
// orientation matrix (a camera rotation there makes a text that faces the viewer; the transpose
// of a plane's axes lays it in that plane).
struct Text3D {
    std::wstring text;
    qrnmath::Vec3 position;
    qrnmath::Mat4 matrix = qrnmath::MatrixUtils::identity(); // column-major
};

} // namespace qrnsg
