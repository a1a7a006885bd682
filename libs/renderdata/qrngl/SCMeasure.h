#pragma once

#include "qrngldata/qrngldata_export.h"
#include "qrnsg/Schema.h"

#include <memory>
#include <vector>

namespace qrngl {

class MeasureRT;

// The document's measurements, each a run-time record the measure renderer draws.
class QRNGLDATA_EXPORT SCMeasure : public qrnsg::Schema {
public:
    SCMeasure();
    std::shared_ptr<qrnsg::Schema> clone() const override;
    void clear() override;
    // Removes every measurement (a moved clip plane invalidates them all).
    void clearAll();

    std::vector<std::shared_ptr<MeasureRT>> measures;
};

} // namespace qrngl
