#include "qrngl/Cursor.h"

namespace qrngl {

// The host's toolkit owns the pointer: the hook shows the cursor.
void Cursor::show(Handle cursor) const {
    if (m_hook)
        m_hook(cursor);
}

} // namespace qrngl
