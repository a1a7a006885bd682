#include "qrngl/SCMeasure.h"

#include <algorithm>

namespace qrngl {

SCMeasure::SCMeasure() : qrnsg::Schema(qrnsg::SCHEMA_MEASURE) {}

std::shared_ptr<qrnsg::Schema> SCMeasure::clone() const {
    auto copy = std::make_shared<SCMeasure>(*this);
    for (auto& entry : copy->records)
        if (entry.second)
            entry.second = std::make_shared<MeasureRT>(*entry.second);
    copy->selected.clear();
    return copy;
}

void SCMeasure::clear() {
    clearAll();
    settings = Settings();
    billboard = 0;
}

void SCMeasure::clearAll(bool keepSaved) {
    ++revision;
    if (!keepSaved) {
        records.clear();
    } else {
        std::vector<unsigned int> gone;
        for (const auto& entry : records)
            if (!entry.second || entry.second->saveMode != MeasureRT::SAVED)
                gone.push_back(entry.first);
        for (unsigned int id : gone)
            records.remove(id);
    }
    selected.erase(std::remove_if(selected.begin(), selected.end(),
                                  [&](const std::shared_ptr<MeasureRT>& r) {
                                      return !r || !records.contains(r->id);
                                  }),
                   selected.end());
    highlightedMeasures.clear();
    tmpReset();
    clearHoleData();
    clearEdgeCircleData();
}

void SCMeasure::tmpReset() {
    selection.clear();
    current = -1;
}

unsigned int SCMeasure::add(std::shared_ptr<MeasureRT> record) {
    const unsigned int id = m_next++;
    ++revision;
    if (record)
        record->id = id;
    records.set(id, std::move(record));
    return id;
}

void SCMeasure::addHoleData(std::shared_ptr<IRenderer> renderer, int& id) {
    id = m_nextData++;
    holeData[id] = std::move(renderer);
}

void SCMeasure::clearHoleData() {
    holeData.clear();
}

void SCMeasure::addEdgeCircleData(std::shared_ptr<IRenderer> renderer, int& id) {
    id = m_nextData++;
    edgeCircleData[id] = std::move(renderer);
}

void SCMeasure::clearEdgeCircleData() {
    edgeCircleData.clear();
}

} // namespace qrngl
