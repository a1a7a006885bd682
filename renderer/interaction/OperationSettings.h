#pragma once

#include "qrngl/interaction/IEventInterpreter.h"
#include "qrngl/qrngl_export.h"

#include <string>

namespace qrngl {

// The user's default left-button operation: the 32-bit value "Operation" of the per-user
// settings key "Software\<exe>\<exe>\Settings\Tools".
class QRNGL_EXPORT OperationSettings {
public:
    OperationSettings() = delete;

    // Sets requested to the stored number, taken as it is, or to ROTATE when there is no such
    // value. The key is created when it is missing; when it can be neither opened nor created,
    // requested is left unchanged and the result is false.
    static bool load(IEventInterpreter::Operation& requested);
    // The same with the settings of the application of that name instead of the running one.
    static bool load(IEventInterpreter::Operation& requested, const std::wstring& appName);
};

} // namespace qrngl
