#pragma once

#include "qrnmath/Tuple.h"

#include <string>

namespace qrnsg {

// A surface material, in the terms of the fixed-function lighting model.
struct MMaterial {
    qrnmath::Vec4 ambient{0.2f, 0.2f, 0.2f, 1.0f};
    qrnmath::Vec4 diffuse{0.8f, 0.8f, 0.8f, 1.0f};
    qrnmath::Vec4 specular{0.0f, 0.0f, 0.0f, 1.0f};
    qrnmath::Vec4 emission{0.0f, 0.0f, 0.0f, 1.0f};
    float shininess = 0.0f;    // 0 to 128
    float transparency = 0.0f; // 0 opaque, 1 invisible
    std::wstring name;

    bool isTransparent() const { return transparency > 0.0f; }
    // A plastic-like material of one colour.
    static MMaterial fromColor(float r, float g, float b, float transparency = 0.0f) {
        MMaterial m;
        m.ambient = qrnmath::Vec4(r * 0.3f, g * 0.3f, b * 0.3f, 1.0f);
        m.diffuse = qrnmath::Vec4(r, g, b, 1.0f);
        m.specular = qrnmath::Vec4(0.3f, 0.3f, 0.3f, 1.0f);
        m.shininess = 32.0f;
        m.transparency = transparency;
        return m;
    }
};

} // namespace qrnsg
