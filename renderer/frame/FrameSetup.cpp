#include "qrngl/frame/FrameSetup.h"

#include "qrngl/GL.h"
#include "qrngl/SCRenderer.h"

namespace qrngl {

void FrameSetup::clearAndEnable(const SCRenderer& renderer) {
    glClearColor(renderer.background[0], renderer.background[1], renderer.background[2], 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_NORMALIZE);
    glEnable(GL_MULTISAMPLE);
    glEnable(GL_POLYGON_OFFSET_FILL);
}

} // namespace qrngl
