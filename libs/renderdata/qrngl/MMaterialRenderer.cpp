#include "qrngl/MMaterialRenderer.h"

#include "qrngl/GL.h"

namespace qrngl {

MMaterialRenderer::MMaterialRenderer(const qrnsg::MMaterial& m) {
    float alpha = 1.0f - m.transparency;
    float diffuse[4] = {m.diffuse[0], m.diffuse[1], m.diffuse[2], alpha};
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, m.ambient.data());
    glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, diffuse);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, m.specular.data());
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, m.emission.data());
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, m.shininess);
    // The same colour for passes drawn without lighting.
    glColor4fv(diffuse);
}

MMaterialRenderer::~MMaterialRenderer() = default;

} // namespace qrngl
