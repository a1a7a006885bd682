#include "qrnglutils/TransparencyStateCreator.h"

namespace qrnglutils {

TransparencyStateCreator::TransparencyStateCreator(std::shared_ptr<qrnsg::SCSceneRT> rt,
                                                   std::shared_ptr<qrnsg::SCSceneTopo> topology,
                                                   std::shared_ptr<qrnsg::SCSceneRes> resources)
    : m_rt(std::move(rt)), m_topology(std::move(topology)), m_resources(std::move(resources)) {}

std::shared_ptr<qrn::IState> TransparencyStateCreator::create() const {
    if (!m_rt || !m_topology || !m_resources)
        return nullptr;
    auto state = std::make_shared<State>();
    state->records = m_rt->meshMaterialRecords;
    state->drawOrder = m_rt->meshes.drawOrder;
    state->m_rt = m_rt;
    return state;
}

void TransparencyStateCreator::State::restore() {
    if (auto rt = m_rt.lock()) {
        rt->meshMaterialRecords = records;
        rt->meshes.drawOrder = drawOrder;
    }
}

} // namespace qrnglutils
