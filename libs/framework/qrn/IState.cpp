#include "qrn/IState.h"

namespace qrn {

IState::~IState() = default;

} // namespace qrn
