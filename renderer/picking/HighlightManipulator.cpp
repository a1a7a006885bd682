#include "qrngl/picking/HighlightManipulator.h"

#include "qrngl/SCRenderer.h"

namespace qrngl {

HighlightManipulator::HighlightManipulator(std::shared_ptr<SelectManipulator> select,
                                           std::shared_ptr<SelectionSet> set,
                                           std::shared_ptr<Cursor> cursor)
    : IManipulator(std::move(cursor)), m_select(std::move(select)), m_set(std::move(set)) {}

void HighlightManipulator::init() {
    if (m_set)
        m_set->setHovered(0);
}

FrameStatus HighlightManipulator::mouseMotion(unsigned int flags, int x, int y) {
    if (!m_set || !m_select)
        return UNCHANGED;
    const bool dragging = (flags & (KEY_LBUTTON | KEY_MBUTTON | KEY_RBUTTON)) != 0;
    const unsigned int name = dragging ? 0u : m_select->pickAt(x, y);
    if (!m_set->setHovered(name))
        return UNCHANGED;
    SCRenderer::markOverlayChange(m_select->document());
    return CHANGED;
}

} // namespace qrngl
