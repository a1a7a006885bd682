#include "qrngl/IRenderContext.h"

namespace qrngl {

IRenderContext::~IRenderContext() = default;

} // namespace qrngl
