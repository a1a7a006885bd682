#include "qrnsg/IFactory.h"

namespace qrnsg {

IFactory::~IFactory() = default;

} // namespace qrnsg
