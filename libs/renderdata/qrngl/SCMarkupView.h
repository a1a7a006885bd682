#pragma once

#include "qrngldata/qrngldata_export.h"
#include "qrnsg/Schema.h"

#include <vector>

namespace qrngl {

// Which of the document's markups (notes, leader notes, measurement markups) are shown.
class QRNGLDATA_EXPORT SCMarkupView : public qrnsg::Schema {
public:
    SCMarkupView();
    std::shared_ptr<qrnsg::Schema> clone() const override;
    void clear() override;

    std::vector<int> shown; // markup ids
};

} // namespace qrngl
