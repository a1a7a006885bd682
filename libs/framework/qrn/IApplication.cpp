#include "qrn/IApplication.h"

namespace qrn {

IApplication::~IApplication() = default;

} // namespace qrn
