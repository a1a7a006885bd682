#include "qrnsg/SCTempGraphics.h"

namespace qrnsg {

SCTempGraphics::SCTempGraphics() : Schema(SCHEMA_TEMP_GRAPHICS) {}

std::shared_ptr<Schema> SCTempGraphics::clone() const {
    auto copy = std::make_shared<SCTempGraphics>(*this);
    // The copy's measurements are its own.
    for (auto& entry : copy->measures)
        if (entry.second)
            entry.second = std::make_shared<Measure>(*entry.second);
    return copy;
}

void SCTempGraphics::clear() {
    measures.clear();
    points.clear();
}

int SCTempGraphics::add(std::shared_ptr<Measure> measure) {
    const int id = m_next++;
    measures.set(id, std::move(measure));
    return id;
}

} // namespace qrnsg
