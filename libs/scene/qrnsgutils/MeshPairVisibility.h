#pragma once

#include "qrnsg/IPairFunctor.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsgutils/qrnsgutils_export.h"

#include <memory>

namespace qrnsgutils {

// Whether a mesh instance is shown, as the run-time component says now: sets or clears the
// visible bit of the flags it is given.
class QRNSGUTILS_EXPORT MeshPairVisibility : public qrnsg::IPairFunctor {
public:
    explicit MeshPairVisibility(std::shared_ptr<const qrnsg::SCSceneRT> rt);
    void apply(int id, const qrnsg::TransformPair& transform, unsigned char& flags) const override;
    bool visible(int id) const;

private:
    std::weak_ptr<const qrnsg::SCSceneRT> m_rt;
};

} // namespace qrnsgutils
