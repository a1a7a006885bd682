#pragma once

#include "qrnsg/Schema.h"
#include "qrnsg/qrnsg_export.h"

namespace qrnsg {

// The document's animation component: a document that has one can be animated, and the views
// that move parts back home (the gesture home view) act only on such documents. It holds no
// data of its own yet.
class QRNSG_EXPORT SCAnimation : public Schema {
public:
    SCAnimation();
    std::shared_ptr<Schema> clone() const override;
    void clear() override;
};

} // namespace qrnsg
