#include "qrnsg/VisibilityFunctor.h"

namespace qrnsg {

void VisibilityFunctor::apply(int id, const TransformPair&, unsigned char& flags) const {
    if (m_hidden.count(id))
        flags = static_cast<unsigned char>(flags & ~VISIBLE);
    else
        flags = static_cast<unsigned char>(flags | VISIBLE);
}

} // namespace qrnsg
