#include "qrngl/overlays/PixelSpace.h"

#include "qrngl/GL.h"

namespace qrngl {

PixelSpace::PixelSpace() {
    GLint viewport[4] = {0, 0, 0, 0};
    glGetIntegerv(GL_VIEWPORT, viewport);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    gluOrtho2D(0.0, viewport[2], 0.0, viewport[3]);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    // A clip plane cuts the model, not what is drawn over it.
    m_clipped = glIsEnabled(GL_CLIP_PLANE0) == GL_TRUE;
    glDisable(GL_CLIP_PLANE0);
}

PixelSpace::~PixelSpace() {
    if (m_clipped)
        glEnable(GL_CLIP_PLANE0);
    glEnable(GL_DEPTH_TEST);
    glDisable(GL_BLEND);
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
}

} // namespace qrngl
