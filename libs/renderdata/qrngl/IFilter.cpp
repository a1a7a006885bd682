#include "qrngl/IFilter.h"

namespace qrngl {

IFilter::~IFilter() = default;

} // namespace qrngl
