#include "qrngl/ICanvas.h"

namespace qrngl {

ICanvas::~ICanvas() = default;

} // namespace qrngl
