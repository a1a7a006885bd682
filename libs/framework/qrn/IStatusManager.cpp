#include "qrn/IStatusManager.h"

namespace qrn {

IStatusManager::~IStatusManager() = default;

} // namespace qrn
