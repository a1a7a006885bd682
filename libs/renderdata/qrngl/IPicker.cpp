#include "qrngl/IPicker.h"

namespace qrngl {

IPicker::~IPicker() = default;

} // namespace qrngl
