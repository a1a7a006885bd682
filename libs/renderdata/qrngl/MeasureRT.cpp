#include "qrngl/MeasureRT.h"

namespace qrngl {

void MeasureRT::clear() {
    *this = MeasureRT(NONE, saveMode);
}

} // namespace qrngl
