#include "qrngl/interaction/OperationSettings.h"

#include "qrnplatform/Environment.h"
#include "qrnplatform/Settings.h"

namespace qrngl {

bool OperationSettings::load(IEventInterpreter::Operation& requested) {
    return load(requested, qrnplatform::Environment::executableBaseName());
}

bool OperationSettings::load(IEventInterpreter::Operation& requested, const std::wstring& appName) {
    qrnplatform::Settings tools(L"Settings\\Tools", appName);
    unsigned int stored = 0;
    switch (tools.readDwordCreatingKey(L"Operation", stored)) {
    case qrnplatform::Settings::KEY_UNAVAILABLE:
        return false;
    case qrnplatform::Settings::VALUE_MISSING:
        requested = IEventInterpreter::ROTATE;
        return true;
    case qrnplatform::Settings::VALUE_READ:
        // No range check: a number that names no operation makes the left button do nothing.
        requested = static_cast<IEventInterpreter::Operation>(stored);
        return true;
    }
    return false;
}

} // namespace qrngl
