#include "qrnsg/IClipProfiler.h"

namespace qrnsg {

IClipProfiler::~IClipProfiler() = default;

} // namespace qrnsg
