#include "qrngl/PLMaterialRenderer.h"

#include "qrngl/GL.h"

namespace qrngl {

PLMaterialRenderer::PLMaterialRenderer(const qrnsg::PLMaterial& m) {
    glPushAttrib(GL_CURRENT_BIT | GL_LINE_BIT | GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT);
    glColor4fv(m.color.data());
    glLineWidth(m.width > 0.0f ? m.width : 1.0f);
    if (m.stipple) {
        glEnable(GL_LINE_STIPPLE);
        glLineStipple(m.stippleFactor, m.stipplePattern);
    } else {
        glDisable(GL_LINE_STIPPLE);
    }
    // A translucent colour shows only when blended.
    if (m.color[3] < 1.0f) {
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    }
}

PLMaterialRenderer::~PLMaterialRenderer() {
    glPopAttrib();
}

} // namespace qrngl
