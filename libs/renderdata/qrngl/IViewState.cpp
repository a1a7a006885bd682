#include "qrngl/IViewState.h"

namespace qrngl {

IViewState::~IViewState() = default;

} // namespace qrngl
