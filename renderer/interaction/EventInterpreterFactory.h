#pragma once

#include "qrngl/interaction/IEventInterpreter.h"
#include "qrngl/qrngl_export.h"

#include <memory>

namespace qrngl {

// Makes the interpreter of a mouse style, the number the renderer settings hold.
class QRNGL_EXPORT EventInterpreterFactory {
public:
    EventInterpreterFactory() = delete;

    // 0 QrnEventInterpreter, 1 CATIAEventInterpreter, 2 ProEEventInterpreter,
    // 3 InventorEventInterpreter, 4 NXEventInterpreter, 5 SWEventInterpreter,
    // 6 SEEventInterpreter; any other number QrnEventInterpreter. Never null.
    static std::shared_ptr<IEventInterpreter> create(int mouseStyle, bool is2D);
};

} // namespace qrngl
