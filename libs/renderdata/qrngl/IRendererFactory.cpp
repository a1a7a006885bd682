#include "qrngl/IRendererFactory.h"

namespace qrngl {

IRendererFactory::~IRendererFactory() = default;

} // namespace qrngl
