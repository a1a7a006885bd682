#include "qrngl/ISelector.h"

namespace qrngl {

ISelector::~ISelector() = default;

} // namespace qrngl
