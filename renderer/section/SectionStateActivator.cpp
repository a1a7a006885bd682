#include "qrngl/section/SectionStateActivator.h"

#include "qrngl/section/ClipManipulator.h"

namespace qrngl {

SectionStateActivator::SectionStateActivator(std::shared_ptr<SCRenderer> renderer)
    : m_renderer(std::move(renderer)) {}

bool SectionStateActivator::execute(std::shared_ptr<qrnsg::Section> section) {
    if (!m_renderer)
        return false;
    const auto manipulators = m_renderer->manipulators;
    for (const auto& manipulator : manipulators)
        if (auto clip = std::dynamic_pointer_cast<ClipManipulator>(manipulator)) {
            if (section)
                clip->setClipType(SCClipping::SECTION, section);
            else
                clip->init();
        }
    return true;
}

} // namespace qrngl
