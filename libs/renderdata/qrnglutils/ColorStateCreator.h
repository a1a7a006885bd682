#pragma once

#include "qrn/IState.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneRes.h"
#include "qrnsg/SCSceneTopo.h"

#include <memory>
#include <vector>

namespace qrnglutils {

// Captures the colours the parts are drawn in: each mesh primitive's material and the mesh
// pass's material tables.
class QRNGLUTILS_EXPORT ColorStateCreator {
public:
    ColorStateCreator(std::shared_ptr<qrnsg::SCSceneRT> rt,
                      std::shared_ptr<qrnsg::SCSceneTopo> topology,
                      std::shared_ptr<qrnsg::SCSceneRes> resources);
    std::shared_ptr<qrn::IState> create() const;

    class QRNGLUTILS_EXPORT State : public qrn::IState {
    public:
        void restore() override;
        qrnsg::Container<int, int> materials;
        std::vector<int> sceneMaterials;
        std::vector<int> textures;

    private:
        friend class ColorStateCreator;
        std::weak_ptr<qrnsg::SCSceneRT> m_rt;
    };

private:
    std::shared_ptr<qrnsg::SCSceneRT> m_rt;
    std::shared_ptr<qrnsg::SCSceneTopo> m_topology;
    std::shared_ptr<qrnsg::SCSceneRes> m_resources;
};

} // namespace qrnglutils
