#include "qrngl/PLMaterialRenderer.h"

#include "qrngl/GL.h"

namespace qrngl {

PLMaterialRenderer::PLMaterialRenderer(const qrnsg::PLMaterial& m) {
    glColor4fv(m.color.data());
    glLineWidth(m.width > 0.0f ? m.width : 1.0f);
    if (m.stipple) {
        glEnable(GL_LINE_STIPPLE);
        glLineStipple(m.stippleFactor, m.stipplePattern);
    } else {
        glDisable(GL_LINE_STIPPLE);
    }
}

PLMaterialRenderer::~PLMaterialRenderer() = default;

} // namespace qrngl
