#pragma once

#include "qrnsg/Container.h"
#include "qrnsg/IPairFunctor.h"
#include "qrnsgutils/qrnsgutils_export.h"

#include <memory>

namespace qrnsgutils {

class QRNSGUTILS_EXPORT DataUtils {
public:
    // Runs the functor over every primitive that has a transform pair, updating its flags, and
    // tells whether any primitive of the kind is visible afterwards (so that its pass is worth
    // running). Without a functor the flags are only read.
    static bool updateRenderState(const qrnsg::Container<int, qrnsg::TransformPair>& transforms,
                                  const std::shared_ptr<qrnsg::IPairFunctor>& functor,
                                  qrnsg::Container<int, unsigned char>& flags);
};

} // namespace qrnsgutils
