#include "qrnui/IFrame.h"

namespace qrnui {

IFrame::~IFrame() = default;

} // namespace qrnui
