#include "qrngl/NamesInitializer.h"

#include "qrngl/GL.h"
#include "qrnsg/EntityNames.h"

namespace qrngl {

NamesInitializer::NamesInitializer(Mode mode) : m_mode(mode) {
    if (m_mode != SELECTION)
        return;
    glInitNames();
    glPushName(0);
}

unsigned int NamesInitializer::take() const {
    return qrnsg::EntityNames::tool(++m_taken);
}

void NamesInitializer::load(unsigned int name) const {
    if (m_mode == SELECTION)
        glLoadName(name);
    else
        glColor4ub(static_cast<GLubyte>(name >> 24), static_cast<GLubyte>(name >> 16),
                   static_cast<GLubyte>(name >> 8), static_cast<GLubyte>(name));
}

} // namespace qrngl
