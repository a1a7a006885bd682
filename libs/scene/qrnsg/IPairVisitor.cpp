#include "qrnsg/IPairVisitor.h"

namespace qrnsg {

IPairVisitor::~IPairVisitor() = default;

} // namespace qrnsg
