#include "qrn/ILogger.h"

namespace qrn {

ILogger::~ILogger() = default;

} // namespace qrn
