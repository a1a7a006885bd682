#include "qrngl/IOverlay.h"

namespace qrngl {

IOverlay::~IOverlay() = default;

} // namespace qrngl
