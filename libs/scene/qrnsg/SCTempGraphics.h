#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/Container.h"
#include "qrnsg/Measure.h"
#include "qrnsg/Schema.h"
#include "qrnsg/qrnsg_export.h"

#include <memory>
#include <vector>

namespace qrnsg {

// What measuring tools show while the user works: their measurements, and the points picked
// towards the next one. Not saved with the document.
class QRNSG_EXPORT SCTempGraphics : public Schema {
public:
    SCTempGraphics();
    std::shared_ptr<Schema> clone() const override;
    void clear() override;
    // Adds a measurement under a fresh id, which it returns.
    int add(std::shared_ptr<Measure> measure);

    Container<int, std::shared_ptr<Measure>> measures;
    std::vector<qrnmath::Vec3> points;

private:
    int m_next = 1;
};

} // namespace qrnsg
