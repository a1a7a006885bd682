#pragma once

#include "qrngldata/qrngldata_export.h"

#include <memory>

namespace qrnsg {
class IPairVisitor;
}

namespace qrngl {

class NamesInitializer;
class FilterResult;

// An overlay that can be picked: it draws itself under pick names, and acts on what was chosen.
class QRNGLDATA_EXPORT IPicker {
public:
    virtual ~IPicker();
    virtual void pick(std::shared_ptr<NamesInitializer> names,
                      std::shared_ptr<qrnsg::IPairVisitor> visitor) = 0;
    virtual void choose(const FilterResult& result) const = 0;
};

} // namespace qrngl
