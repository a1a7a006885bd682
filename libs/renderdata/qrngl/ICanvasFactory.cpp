#include "qrngl/ICanvasFactory.h"

namespace qrngl {

ICanvasFactory::~ICanvasFactory() = default;

} // namespace qrngl
