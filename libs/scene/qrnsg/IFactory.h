#pragma once

#include "qrnsg/Schema.h"
#include "qrnsg/qrnsg_export.h"

#include <memory>

namespace qrnsg {

// One link of the document's component factory chain: makes the types it knows and hands
// every other type to the next link.
class QRNSG_EXPORT IFactory {
public:
    virtual ~IFactory();
    virtual std::shared_ptr<Schema> create(short type) = 0;
};

} // namespace qrnsg
