#include "qrnsg/IActionFunctor.h"

namespace qrnsg {

IActionFunctor::~IActionFunctor() = default;

} // namespace qrnsg
