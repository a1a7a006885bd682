#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/PairT.h"
#include "qrnsg/qrnsg_export.h"

namespace qrnsg {

using TransformPair = PairT<qrnmath::Mat4, int>;

// Updates one primitive's run-time flags before a frame (visibility, for example).
class QRNSG_EXPORT IPairFunctor {
public:
    virtual ~IPairFunctor();
    virtual void apply(int id, const TransformPair& transform, unsigned char& flags) const = 0;
};

} // namespace qrnsg
