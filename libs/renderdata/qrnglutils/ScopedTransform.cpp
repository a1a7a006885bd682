#include "qrnglutils/ScopedTransform.h"

#include "qrngl/GL.h"

namespace qrnglutils {

ScopedTransform::ScopedTransform(const qrnsgutils::InstanceWalker::Instance& instance)
    : m_pushed(instance.transform != nullptr) {
    if (!m_pushed)
        return;
    glPushMatrix();
    glMultMatrixf(instance.transform->data());
}

ScopedTransform::~ScopedTransform() {
    if (m_pushed)
        glPopMatrix();
}

} // namespace qrnglutils
