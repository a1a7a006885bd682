#include "qrngl/measure/MeasureSelectManipulator.h"

#include "qrngl/SCMeasure.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/picking/EntityFilter.h"
#include "qrngl/picking/PickingHelper.h"
#include "qrnglutils/MeasureUtils.h"
#include "qrnsg/SCPmi.h"

#include <algorithm>

namespace qrngl {

MeasureSelectManipulator::MeasureSelectManipulator(std::shared_ptr<qrn::IDocument> document)
    : IManipulator(nullptr), m_document(std::move(document)),
      m_filter(std::make_shared<EntityFilter>(PickingHelper::TOOL_TYPE, EntityFilter::NEAREST)) {}

void MeasureSelectManipulator::init() {
    IManipulator::init();
    m_click.reset();
}

void MeasureSelectManipulator::customize(std::shared_ptr<IFilter> filter,
                                         std::shared_ptr<ISelector> selector) {
    m_filter = std::move(filter);
    m_selector = std::move(selector);
}

FrameStatus MeasureSelectManipulator::mouseMotion(unsigned int, int x, int y) {
    m_click.move(x, y);
    return UNCHANGED;
}

FrameStatus MeasureSelectManipulator::mouseButtonDown(FrameStatus status, unsigned int flags,
                                                      MouseButton button, int x, int y) {
    m_click.press(button, x, y);
    return IManipulator::mouseButtonDown(status, flags, button, x, y);
}

FrameStatus MeasureSelectManipulator::mouseButtonDblClk(FrameStatus status, unsigned int flags,
                                                        MouseButton button, int x, int y) {
    return IManipulator::mouseButtonDblClk(status, flags, button, x, y);
}

FrameStatus MeasureSelectManipulator::mouseButtonUp(FrameStatus status, unsigned int flags,
                                                    MouseButton button, int x, int y) {
    FrameStatus result = IManipulator::mouseButtonUp(status, flags, button, x, y);
    const bool click = m_click.release(button);
    if (result != CHANGED && status != CHANGED && button == LEFT && click &&
        (doMeasureSelect(flags, x, y) || (m_markups && doMarkUpSelect(flags, x, y))))
        result = CHANGED;
    return result == CHANGED || status == CHANGED ? CHANGED : UNCHANGED;
}

bool MeasureSelectManipulator::doMeasureSelect(unsigned int flags, int x, int y) {
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    auto renderer = qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    if (!measure || !renderer)
        return false;
    if (measure->records.empty()) {
        measure->selected.clear();
        measure->highlightedMeasures.clear();
        measure->highlightedMarkups.clear();
        return false;
    }
    measure->current = -1;
    PickingHelper::pick(renderer->pickCanvas, m_filter, m_selector, flags, x, y,
                        measure->pickRadius);
    // The renderer's choice names the record whose label was hit.
    const int chosen = measure->current;
    measure->current = -1;
    if (!m_filter || m_filter->get().empty() || chosen <= 0)
        return false;
    const EntityPick pick(qrnsg::EntityNames::EDGE_LIKE, chosen);
    std::shared_ptr<MeasureRT> record;
    if (!qrnglutils::MeasureUtils::getSelectedMeasure(measure, pick, record))
        return false;
    auto& selected = measure->selected;
    const auto found = std::find(selected.begin(), selected.end(), record);
    // A click on a selected measurement deselects it; on another, it joins the selection.
    if (found != selected.end()) {
        selected.erase(found);
        measure->highlightedMeasures.erase(std::remove(measure->highlightedMeasures.begin(),
                                                       measure->highlightedMeasures.end(),
                                                       record->id),
                                           measure->highlightedMeasures.end());
    } else {
        selected.push_back(record);
        measure->highlightedMeasures.push_back(record->id);
    }
    ++measure->revision;
    renderer->update();
    return true;
}

bool MeasureSelectManipulator::doMarkUpSelect(unsigned int, int x, int y) {
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    auto renderer = qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    auto pmi = qrn::component<qrnsg::SCPmi>(m_document, qrnsg::SCHEMA_PMI);
    if (!measure || !renderer || !pmi || pmi->items.empty())
        return false;
    // A markup's lines are edge-like entities named by their primitive.
    const unsigned int name =
        EntityFilter::nearest(renderer->pickCanvas, 8 | 16, x, y, measure->pickRadius);
    if (qrnsg::EntityNames::kindOf(name) != qrnsg::EntityNames::EDGE_LIKE)
        return false;
    const int primitive = static_cast<int>(name & qrnsg::EntityNames::NUMBER_MASK);
    for (std::size_t i = 0; i < pmi->items.size(); ++i) {
        const auto& ids = pmi->items[i].polylineIds;
        if (std::find(ids.begin(), ids.end(), primitive) == ids.end())
            continue;
        auto& marked = measure->highlightedMarkups;
        const auto found = std::find(marked.begin(), marked.end(), static_cast<int>(i));
        if (found != marked.end())
            marked.erase(found);
        else
            marked.push_back(static_cast<int>(i));
        renderer->update();
        return true;
    }
    return false;
}

} // namespace qrngl
