#include "qrnglutils/SectionStateCreator.h"

#include "qrnmath/PlaneUtils.h"

namespace qrnglutils {

SectionStateCreator::SectionStateCreator(std::shared_ptr<qrngl::SCClipping> clipping,
                                         std::shared_ptr<qrngl::SCTriad> triad, Activate activate)
    : m_clipping(std::move(clipping)), m_triad(std::move(triad)), m_activate(std::move(activate)) {}

std::shared_ptr<qrn::IState> SectionStateCreator::create() const {
    if (!m_clipping || !m_triad)
        return nullptr;
    auto state = std::make_shared<State>();
    if (m_clipping->hasPlane()) {
        const auto& plane = m_clipping->planes.front();
        auto section = std::make_shared<qrnsg::Section>();
        section->point = qrnmath::PlaneUtils::pointOn(plane);
        // The normal as the plane was made: a flip is put back by the flag.
        section->normal = qrnmath::PlaneUtils::normal(plane) * (m_clipping->flipped ? -1.f : 1.f);
        section->capped = m_clipping->capped;
        section->showProfile = m_clipping->showProfile;
        state->section = section;
    }
    state->flipped = m_clipping->flipped;
    state->triad = *m_triad;
    state->m_clipping = m_clipping;
    state->m_triad = m_triad;
    state->m_activate = m_activate;
    return state;
}

void SectionStateCreator::State::restore() {
    auto clipping = m_clipping.lock();
    if (!clipping)
        return;
    clipping->flipped = flipped;
    if (auto t = m_triad.lock())
        *t = triad;
    if (m_activate)
        m_activate(section);
}

} // namespace qrnglutils
