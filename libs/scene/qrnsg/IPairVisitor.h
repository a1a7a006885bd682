#pragma once

#include "qrnsg/qrnsg_export.h"

namespace qrnsg {

// What a pick pass tells everything it draws under names: the entity types it looks for
// (faces 1, edges 2, points 4, tool drawables 32).
class QRNSG_EXPORT IPairVisitor {
public:
    virtual ~IPairVisitor();
    virtual void setEntityType(unsigned short type) = 0;
    virtual unsigned short entityType() const = 0;
};

} // namespace qrnsg
