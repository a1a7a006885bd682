#pragma once

#include "qrn/IState.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneRes.h"
#include "qrnsg/SCSceneTopo.h"

#include <memory>
#include <vector>

namespace qrnglutils {

// Captures which materials of the mesh pass are see-through, and the draw order that puts
// them last.
class QRNGLUTILS_EXPORT TransparencyStateCreator {
public:
    TransparencyStateCreator(std::shared_ptr<qrnsg::SCSceneRT> rt,
                             std::shared_ptr<qrnsg::SCSceneTopo> topology,
                             std::shared_ptr<qrnsg::SCSceneRes> resources);
    std::shared_ptr<qrn::IState> create() const;

    class QRNGLUTILS_EXPORT State : public qrn::IState {
    public:
        void restore() override;
        std::vector<qrnsg::MeshMaterialRecord> records;
        std::vector<int> drawOrder;

    private:
        friend class TransparencyStateCreator;
        std::weak_ptr<qrnsg::SCSceneRT> m_rt;
    };

private:
    std::shared_ptr<qrnsg::SCSceneRT> m_rt;
    std::shared_ptr<qrnsg::SCSceneTopo> m_topology;
    std::shared_ptr<qrnsg::SCSceneRes> m_resources;
};

} // namespace qrnglutils
