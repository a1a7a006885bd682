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

bool ScopedTransform::mirrors(const qrnmath::Mat4* m) {
    if (!m)
        return false;
    const float* a = m->data();
    return a[0] * (a[5] * a[10] - a[9] * a[6]) - a[4] * (a[1] * a[10] - a[9] * a[2]) +
               a[8] * (a[1] * a[6] - a[5] * a[2]) <
           0.0f;
}

} // namespace qrnglutils
