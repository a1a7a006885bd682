#pragma once

#include "qrngl/IRenderer.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnmath/Tuple.h"

namespace qrnglutils {

// The frame's scene set-up renderer: a head light that moves with the viewer, two-sided
// lighting (cut and open shells show their inside lit), a soft ambient term, and the
// polygon offset that keeps edges visible on their faces.
class QRNGLUTILS_EXPORT LightRenderer : public qrngl::IRenderer {
public:
    LightRenderer();
    void render() const override;

    qrnmath::Vec4 ambient;
    qrnmath::Vec4 diffuse;
    qrnmath::Vec4 specular;
    // Direction towards the light in eye space.
    qrnmath::Vec4 direction;
};

} // namespace qrnglutils
