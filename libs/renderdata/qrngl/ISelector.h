#pragma once

#include "qrngl/FilterResult.h"
#include "qrngldata/qrngldata_export.h"

namespace qrngl {

// What a tool does with the entities its filter chose: select, highlight, measure.
class QRNGLDATA_EXPORT ISelector {
public:
    virtual ~ISelector();
    // flags: the key-state flags of the event that picked.
    virtual void select(unsigned int flags, const FilterResult& result) = 0;
};

} // namespace qrngl
