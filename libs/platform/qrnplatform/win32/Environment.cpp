#include "qrnplatform/Environment.h"

#include <cstdlib>
#include <malloc.h>
#include <vector>
#include <windows.h>

namespace qrnplatform {

std::wstring Environment::executablePath() {
    // GetModuleFileNameW truncates silently when the buffer is full, so grow until it is not.
    std::vector<wchar_t> buffer(MAX_PATH);
    for (;;) {
        const DWORD n =
            ::GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
        if (n == 0)
            return {};
        if (n < buffer.size())
            return std::wstring(buffer.data(), n);
        buffer.resize(buffer.size() * 2);
    }
}

std::wstring Environment::getVariable(const std::wstring& name) {
    std::vector<wchar_t> buffer(256);
    for (;;) {
        const DWORD n = ::GetEnvironmentVariableW(name.c_str(), buffer.data(),
                                                  static_cast<DWORD>(buffer.size()));
        if (n == 0)
            return {};
        // When it does not fit, n is the size needed including the terminator.
        if (n < buffer.size())
            return std::wstring(buffer.data(), n);
        buffer.resize(n);
    }
}

bool Environment::setVariable(const std::wstring& name, const std::wstring& value) {
    if (value.empty())
        return unsetVariable(name);
    // The C runtime keeps its own copy for getenv; update both.
    const std::wstring assignment = name + L"=" + value;
    return ::SetEnvironmentVariableW(name.c_str(), value.c_str()) != 0 &&
           ::_wputenv(assignment.c_str()) == 0;
}

bool Environment::unsetVariable(const std::wstring& name) {
    const std::wstring assignment = name + L"=";
    const bool ok = ::SetEnvironmentVariableW(name.c_str(), nullptr) != 0 ||
                    ::GetLastError() == ERROR_ENVVAR_NOT_FOUND;
    return ::_wputenv(assignment.c_str()) == 0 && ok;
}

void Environment::releaseFreedMemory() {
    _heapmin();
}

} // namespace qrnplatform
