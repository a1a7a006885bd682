#include "qrnglutils/ColorStateCreator.h"

namespace qrnglutils {

ColorStateCreator::ColorStateCreator(std::shared_ptr<qrnsg::SCSceneRT> rt,
                                     std::shared_ptr<qrnsg::SCSceneTopo> topology,
                                     std::shared_ptr<qrnsg::SCSceneRes> resources)
    : m_rt(std::move(rt)), m_topology(std::move(topology)), m_resources(std::move(resources)) {}

std::shared_ptr<qrn::IState> ColorStateCreator::create() const {
    if (!m_rt || !m_topology || !m_resources)
        return nullptr;
    auto state = std::make_shared<State>();
    state->materials = m_rt->meshes.materials;
    state->sceneMaterials = m_rt->meshSceneMaterials;
    state->textures = m_rt->meshTextures;
    state->m_rt = m_rt;
    return state;
}

void ColorStateCreator::State::restore() {
    if (auto rt = m_rt.lock()) {
        rt->meshes.materials = materials;
        rt->meshSceneMaterials = sceneMaterials;
        rt->meshTextures = textures;
    }
}

} // namespace qrnglutils
