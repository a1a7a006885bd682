#include "qrngl/picking/SelectManipulator.h"

#include "qrngl/SCRenderer.h"
#include "qrngl/picking/EntityFilter.h"
#include "qrngl/picking/PickingHelper.h"
#include "qrnsg/SCSceneTopo.h"

#include <cstdlib>

namespace qrngl {

using qrnsg::EntityNames;

SelectManipulator::SelectManipulator(std::shared_ptr<qrn::IDocument> document,
                                     std::shared_ptr<SelectionSet> set,
                                     std::shared_ptr<Cursor> cursor)
    : IManipulator(std::move(cursor)), m_document(std::move(document)), m_set(std::move(set)) {}

void SelectManipulator::init() {
    m_pressed = false;
}

FrameStatus SelectManipulator::mouseButtonDown(FrameStatus status, unsigned int flags,
                                               MouseButton button, int x, int y) {
    status = IManipulator::mouseButtonDown(status, flags, button, x, y);
    if (button == LEFT) {
        // A press an earlier tool took is not the start of a click.
        m_pressed = status != CHANGED;
        m_pressX = x;
        m_pressY = y;
    }
    return status;
}

FrameStatus SelectManipulator::mouseButtonUp(FrameStatus status, unsigned int flags,
                                             MouseButton button, int x, int y) {
    status = IManipulator::mouseButtonUp(status, flags, button, x, y);
    if (button != LEFT || !m_pressed)
        return status;
    m_pressed = false;
    if (status == CHANGED || std::abs(x - m_pressX) > CLICK_SLOP ||
        std::abs(y - m_pressY) > CLICK_SLOP)
        return status;
    return selectAt(x, y, flags) ? CHANGED : status;
}

unsigned int SelectManipulator::keep(unsigned int name) const {
    if (m_set->mode() != SelectionSet::PART || !m_document)
        return name;
    auto topology = std::dynamic_pointer_cast<qrnsg::SCSceneTopo>(
        m_document->getSchema(qrnsg::SCHEMA_SCENE_TOPO));
    const EntityNames::Entity entity = topology ? topology->resolve(name) : EntityNames::Entity();
    if (entity.kind == EntityNames::EDGE_LIKE) // PMI, whole whatever the mode
        return name;
    return entity.node >= 0 ? EntityNames::part(entity.node) : 0u;
}

unsigned int SelectManipulator::pickAt(int x, int y) const {
    auto renderer =
        m_document
            ? std::dynamic_pointer_cast<SCRenderer>(m_document->getSchema(qrnsg::SCHEMA_RENDERER))
            : nullptr;
    if (!renderer || !renderer->pickCanvas || !m_set)
        return 0;
    const unsigned int name =
        EntityFilter::nearest(renderer->pickCanvas, m_set->mask(), x, y, PICK_SIZE);
    if (name)
        return keep(name);
    // Where the mode's own entities are not, a click takes the PMI there, in every mode.
    return (m_set->mask() & 8)
               ? 0u
               : EntityFilter::nearest(renderer->pickCanvas, 8 | 16, x, y, PICK_SIZE);
}

bool SelectManipulator::selectAt(int x, int y, unsigned int flags) {
    if (!m_set)
        return false;
    const unsigned int name = pickAt(x, y);
    return apply(name ? std::vector<unsigned int>{name} : std::vector<unsigned int>(), flags,
                 false);
}

bool SelectManipulator::selectBox(int x0, int y0, int x1, int y1, unsigned int flags) {
    auto renderer =
        m_document
            ? std::dynamic_pointer_cast<SCRenderer>(m_document->getSchema(qrnsg::SCHEMA_RENDERER))
            : nullptr;
    if (!renderer || !m_set)
        return false;
    std::vector<unsigned int> names;
    if (m_set->selectThrough() && m_throughCanvas) {
        // The helper picks on the renderer's canvas: lend it the see-through one.
        auto own = renderer->pickCanvas;
        renderer->pickCanvas = m_throughCanvas;
        names = EntityFilter::inside(renderer, m_set->mask(), x0, y0, x1, y1);
        renderer->pickCanvas = own;
    } else {
        names = EntityFilter::inside(renderer, m_set->mask(), x0, y0, x1, y1);
    }
    std::vector<unsigned int> kept;
    for (unsigned int n : names)
        if (unsigned int k = keep(n))
            kept.push_back(k);
    return apply(kept, flags, true);
}

bool SelectManipulator::apply(const std::vector<unsigned int>& names, unsigned int flags,
                              bool box) {
    const bool adding = (flags & (KEY_SHIFT | KEY_CONTROL)) != 0;
    const bool changed = !adding ? m_set->replace(names)
                         : box   ? m_set->add(names)
                                 : !names.empty() && m_set->toggle(names.front());
    // The selection shows in its overlay alone.
    if (changed)
        SCRenderer::markOverlayChange(m_document);
    return changed;
}

} // namespace qrngl
