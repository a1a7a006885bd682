#include "qrnsgutils/DataUtils.h"

#include "qrnsg/SCSceneRT.h"

namespace qrnsgutils {

bool DataUtils::updateRenderState(const qrnsg::Container<int, qrnsg::TransformPair>& transforms,
                                  const std::shared_ptr<qrnsg::IPairFunctor>& functor,
                                  qrnsg::Container<int, unsigned char>& flags) {
    bool any = false;
    for (const auto& entry : transforms) {
        unsigned char* f = flags.find(entry.first);
        if (!f) {
            if (!functor)
                continue;
            f = &flags.set(entry.first, 0);
        }
        if (functor)
            functor->apply(entry.first, entry.second, *f);
        if (*f & qrnsg::RTState::VISIBLE)
            any = true;
    }
    return any;
}

} // namespace qrnsgutils
