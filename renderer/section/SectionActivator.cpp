#include "qrngl/section/SectionActivator.h"

#include "qrngl/section/ClipManipulator.h"

namespace qrngl {

SectionActivator::SectionActivator(std::shared_ptr<SCRenderer> renderer,
                                   std::shared_ptr<qrnsg::SCPmi> pmi)
    : m_renderer(std::move(renderer)), m_pmi(std::move(pmi)) {}

bool SectionActivator::execute(const int& sectionIndex) {
    if (!m_renderer || !m_pmi)
        return false;
    const auto manipulators = m_renderer->manipulators; // a change of type may edit the list
    for (const auto& manipulator : manipulators) {
        auto clip = std::dynamic_pointer_cast<ClipManipulator>(manipulator);
        if (!clip)
            continue;
        if (sectionIndex != -1 && sectionIndex >= 0 &&
            static_cast<std::size_t>(sectionIndex) < m_pmi->sections.size())
            clip->setClipType(SCClipping::SECTION,
                              m_pmi->sections[static_cast<std::size_t>(sectionIndex)]);
        else
            clip->init();
    }
    return true;
}

} // namespace qrngl
