#pragma once

#include "qrngl/FilterResult.h"
#include "qrngl/PickResult.h"
#include "qrngldata/qrngldata_export.h"

#include <vector>

namespace qrngl {

// A tool's choice among the raw hits of a pick: the entity kinds it asks the pass for, and
// which of the hits it keeps.
class QRNGLDATA_EXPORT IFilter {
public:
    virtual ~IFilter();
    // The entity-type mask the pick pass draws: 1 faces, 2 edges, 4 points (8 and 16 together
    // edge-like lines).
    virtual unsigned short& type() = 0;
    // Keeps the hits the tool wants in the result, replacing the previous one.
    virtual void filter(const std::vector<PickResult>& hits) = 0;
    const FilterResult& get() const { return m_result; }

protected:
    FilterResult m_result;
};

} // namespace qrngl
