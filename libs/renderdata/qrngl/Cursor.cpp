#include "qrngl/Cursor.h"

namespace qrngl {

Cursor::Handle Cursor::get(int operation) const {
    auto it = m_cursors.find(operation);
    return it == m_cursors.end() ? nullptr : it->second;
}

} // namespace qrngl
