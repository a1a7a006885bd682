#include "qrnviewer/Measuring.h"

#include "qrngl/SCMeasure.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/frame/RendererFactory.h"
#include "qrngl/measure/MeasureManipulator.h"
#include "qrngl/measure/MeasureRenderer.h"
#include "qrngl/measure/MeasureSelectManipulator.h"
#include "qrngl/measure/SmartMeasureManipulator.h"
#include "qrnplatform/Text.h"
#include "qrnsg/SCTempGraphics.h"
#include "qrnviewer/EntityText.h"

#include <cstdio>

namespace qrnviewer {

namespace {

const unsigned int kDelete = 0x2E;
const unsigned int kEscape = 27;
const short kAll = qrngl::IMeasureManipulator::FILTER_POINT |
                   qrngl::IMeasureManipulator::FILTER_EDGE |
                   qrngl::IMeasureManipulator::FILTER_FACE;

std::string labelText(const std::wstring& text) {
    std::string out = qrnplatform::Text::toUtf8(text);
    for (std::size_t at = out.find('\n'); at != std::string::npos; at = out.find('\n', at))
        out.replace(at, 1, "; ");
    return out;
}

} // namespace

Measuring::Measuring(std::shared_ptr<qrn::IDocument> document,
                     std::shared_ptr<qrngl::Cursor> cursor)
    : m_document(std::move(document)),
      m_quick(std::make_shared<qrngl::MeasureManipulator>(m_document, cursor, nullptr)),
      m_smart(std::make_shared<qrngl::SmartMeasureManipulator>(m_document, cursor, nullptr)),
      m_select(std::make_shared<qrngl::MeasureSelectManipulator>(m_document)),
      m_renderer(std::make_shared<qrngl::MeasureRenderer>(
          m_document, std::make_shared<qrngl::RendererFactory>())) {
    // Nothing set up: every kind may be picked.
    if (m_smart->getFilter() == 0)
        m_smart->setFilter(kAll);
    m_quick->setFilter(kAll);
    // The viewer's own selection takes PMI.
    m_select->setMarkups(false);
    if (auto renderer = qrn::component<qrngl::SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER)) {
        renderer->addManipulator(m_quick);
        renderer->addManipulator(m_smart);
        renderer->addManipulator(m_select);
        // Labels stay when the tools are off.
        renderer->renderers[qrngl::SCRenderer::MEASURE_RENDERER] = m_renderer;
    }
}

Measuring::~Measuring() {
    if (auto renderer = qrn::component<qrngl::SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER)) {
        setMode(OFF);
        renderer->removeManipulator(m_quick);
        renderer->removeManipulator(m_smart);
        renderer->removeManipulator(m_select);
        renderer->renderers.erase(qrngl::SCRenderer::MEASURE_RENDERER);
    }
}

void Measuring::say(const std::string& text) const {
    if (m_say)
        m_say(text);
}

void Measuring::setMode(Mode mode) {
    m_mode = mode;
    m_smart->setMode(mode == SMART ? 1 : 0);
    m_quick->setMode(mode == DISTANCE ? qrngl::MeasureManipulator::DISTANCE_MODE
                     : mode == POINT  ? qrngl::MeasureManipulator::POINT_MODE
                                      : 0);
}

bool Measuring::key(unsigned int key, bool shift) {
    static const char* const names[] = {"off", "smart (click one or two vertices, edges, faces)",
                                        "distance (click two points)", "point (click a point)"};
    if (key == '9') {
        setMode(static_cast<Mode>((m_mode + 1) % 4));
        say(std::string("measure: ") + names[m_mode]);
        return true;
    }
    if (key == kEscape && m_mode != OFF) {
        setMode(OFF);
        say("measure: off");
        return true;
    }
    auto measure = qrn::component<qrngl::SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    if (key != kDelete || !measure)
        return false;
    std::size_t gone = 0;
    if (shift) {
        gone = measure->records.size();
        measure->clearAll();
        if (auto temp =
                qrn::component<qrnsg::SCTempGraphics>(m_document, qrnsg::SCHEMA_TEMP_GRAPHICS)) {
            gone += temp->measures.size();
            temp->clear();
        }
    } else {
        for (const auto& record : measure->selected)
            if (record && measure->records.remove(record->id))
                ++gone;
        measure->selected.clear();
        measure->highlightedMeasures.clear();
        ++measure->revision;
    }
    say(gone ? std::to_string(gone) + " measurement" + (gone == 1 ? "" : "s") + " deleted"
             : std::string("no measurement selected (click a label to select it)"));
    return true;
}

bool Measuring::measureAt(const std::shared_ptr<qrn::IDocument>& document, int x0, int y0, int x1,
                          int y1) {
    qrngl::SmartMeasureManipulator smart(document, nullptr, nullptr);
    smart.setFilter(kAll);
    qrngl::EntityPick a, b;
    const bool first = smart.getPickingResult(x0, y0, a);
    const bool second = smart.getPickingResult(x1, y1, b);
    const std::string where = std::to_string(x0) + "," + std::to_string(y0) + " to " +
                              std::to_string(x1) + "," + std::to_string(y1);
    if (!first || !second) {
        std::printf("qrnview: measure %s: nothing to measure at %d,%d\n", where.c_str(),
                    first ? x1 : x0, first ? y1 : y0);
        return false;
    }
    const auto record =
        smart.measurePair(static_cast<unsigned int>(a.second), static_cast<unsigned int>(b.second));
    const std::string what = EntityText::describe(document, static_cast<unsigned int>(a.second)) +
                             " and " +
                             EntityText::describe(document, static_cast<unsigned int>(b.second));
    if (!record) {
        std::printf("qrnview: measure %s: %s: no measurement between them\n", where.c_str(),
                    what.c_str());
        return false;
    }
    std::printf("qrnview: measure %s: %s: %s %s%s\n", where.c_str(), what.c_str(),
                qrngl::SmartMeasureManipulator::kindName(record->type),
                labelText(record->text).c_str(), record->exact ? " (exact)" : "");
    return true;
}

} // namespace qrnviewer
