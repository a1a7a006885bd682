#include "qrn/IUpdater.h"

namespace qrn {

IUpdater::~IUpdater() = default;

} // namespace qrn
