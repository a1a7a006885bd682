#include <windows.h>

#include "qrngl/Cursor.h"

namespace qrngl {

void Cursor::show(Handle cursor) const {
    SetCursor(static_cast<HCURSOR>(cursor));
    if (m_hook)
        m_hook(cursor);
}

} // namespace qrngl
