#pragma once

#include "qrngldata/qrngldata_export.h"
#include "qrnmath/Tuple.h"
#include "qrnsg/Schema.h"

namespace qrngl {

// The component-move triad: whether it is shown and where it stands in the model.
class QRNGLDATA_EXPORT SCTriad : public qrnsg::Schema {
public:
    SCTriad();
    std::shared_ptr<qrnsg::Schema> clone() const override;
    void clear() override;

    bool shown = false;
    qrnmath::Mat4 placement{1.f, 0.f, 0.f, 0.f, 0.f, 1.f, 0.f, 0.f,
                            0.f, 0.f, 1.f, 0.f, 0.f, 0.f, 0.f, 1.f};
};

} // namespace qrngl
