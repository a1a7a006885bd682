#include "qrngl/IStripEntry.h"

namespace qrngl {

IStripEntry::~IStripEntry() = default;

} // namespace qrngl
