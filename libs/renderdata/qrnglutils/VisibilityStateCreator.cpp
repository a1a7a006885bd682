#include "qrnglutils/VisibilityStateCreator.h"

namespace qrnglutils {

using qrnsg::RTState;

namespace {
RTState* kind(qrnsg::SCSceneRT& rt, int k) {
    return &rt.of(static_cast<qrnsg::SCSceneRT::Kind>(k));
}
} // namespace

VisibilityStateCreator::VisibilityStateCreator(std::shared_ptr<qrnsg::SCPmi> pmi,
                                               std::shared_ptr<qrnsg::SCSceneRT> rt,
                                               std::shared_ptr<qrngl::SCMarkupView> markups,
                                               std::shared_ptr<qrngl::SCRenderer> renderer)
    : m_pmi(std::move(pmi)), m_rt(std::move(rt)), m_markups(std::move(markups)),
      m_renderer(std::move(renderer)) {}

std::shared_ptr<qrn::IState> VisibilityStateCreator::create() const {
    if (!m_pmi || !m_rt || !m_markups)
        return nullptr;
    auto state = std::make_shared<State>();
    for (int k = 0; k < 4; ++k)
        for (const auto& entry : kind(*m_rt, k)->flags)
            state->shown[k].emplace_back(entry.first, (entry.second & RTState::VISIBLE) != 0);
    state->markups = m_markups->shown;
    state->m_rt = m_rt;
    state->m_markups = m_markups;
    state->m_renderer = m_renderer;
    return state;
}

void VisibilityStateCreator::State::restore() {
    auto rt = m_rt.lock();
    if (!rt)
        return;
    for (int k = 0; k < 4; ++k)
        for (const auto& [id, visible] : shown[k])
            kind(*rt, k)->setVisible(id, visible);
    if (auto m = m_markups.lock())
        m->shown = markups;
    if (auto renderer = m_renderer.lock()) {
        if (renderer->pickCanvas)
            renderer->pickCanvas->Invalidate();
        for (const auto& weak : renderer->canvases)
            if (auto canvas = weak.lock())
                canvas->Invalidate();
        renderer->update();
    }
}

} // namespace qrnglutils
