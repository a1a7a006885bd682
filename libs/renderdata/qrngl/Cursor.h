#pragma once

#include "qrngldata/qrngldata_export.h"

#include <functional>
#include <map>

namespace qrngl {

// The canvas's cursor set: one cursor handle per camera operation value (the interpreters'
// Operation numbers). Handles are the host's (HCURSOR on Windows, whatever its toolkit uses
// elsewhere); show() hands one to the host's cursor hook.
class QRNGLDATA_EXPORT Cursor {
public:
    using Handle = void*;
    using Hook = std::function<void(Handle)>;

    void set(int operation, Handle cursor) { m_cursors[operation] = cursor; }
    // The cursor of an operation; null when none was set.
    Handle get(int operation) const;
    // Makes the cursor current: SetCursor on Windows, the host's hook elsewhere.
    void show(Handle cursor) const;
    void setHook(Hook hook) { m_hook = std::move(hook); }

private:
    std::map<int, Handle> m_cursors;
    Hook m_hook;
};

} // namespace qrngl
