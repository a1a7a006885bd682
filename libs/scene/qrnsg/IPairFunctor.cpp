#include "qrnsg/IPairFunctor.h"

namespace qrnsg {

IPairFunctor::~IPairFunctor() = default;

} // namespace qrnsg
