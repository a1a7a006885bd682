#include "qrnglutils/LightRenderer.h"

#include "qrngl/GL.h"

namespace qrnglutils {

LightRenderer::LightRenderer()
    : ambient(0.25f, 0.25f, 0.25f, 1.0f), diffuse(0.8f, 0.8f, 0.8f, 1.0f),
      specular(0.5f, 0.5f, 0.5f, 1.0f), direction(0.2f, 0.3f, 1.0f, 0.0f) {}

void LightRenderer::render() const {
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, ambient.data());
    glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, GL_TRUE);
    glLightModeli(GL_LIGHT_MODEL_LOCAL_VIEWER, GL_FALSE);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, diffuse.data());
    glLightfv(GL_LIGHT0, GL_SPECULAR, specular.data());
    glPushMatrix();
    glLoadIdentity(); // eye space: the light follows the camera
    glLightfv(GL_LIGHT0, GL_POSITION, direction.data());
    glPopMatrix();
    glEnable(GL_LIGHT0);
    glEnable(GL_LIGHTING);
    // Faces pushed back a little, so that their edges drawn on them stay visible.
    glPolygonOffset(1.0f, 1.0f);
}

} // namespace qrnglutils
