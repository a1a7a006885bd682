#pragma once

#include "qrnsg/qrnsg_export.h"

namespace qrnsg {

// An action on a document that its maker bound it to, run when the host chooses (after a
// load, for example); true when it changed something.
class QRNSG_EXPORT IActionFunctor {
public:
    virtual ~IActionFunctor();
    virtual bool operator()() = 0;
};

} // namespace qrnsg
