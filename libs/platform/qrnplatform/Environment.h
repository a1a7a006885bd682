#pragma once

#include "qrnplatform/qrnplatform_export.h"

#include <string>

namespace qrnplatform {

// The running process: its executable and its environment variables.
class QRNPLATFORM_EXPORT Environment {
public:
    Environment() = delete;

    // Absolute path of the running executable; empty when the system cannot tell.
    static std::wstring executablePath();
    // File name of the executable without folder and without ".exe", e.g. L"qrnview".
    static std::wstring executableBaseName();

    // Empty when the variable is not set.
    static std::wstring getVariable(const std::wstring& name);
    static bool setVariable(const std::wstring& name, const std::wstring& value);
    static bool unsetVariable(const std::wstring& name);
    // Hands what the process freed back to the system, which the heap would keep for later
    // otherwise: after a large load, before drawing needs memory of its own.
    static void releaseFreedMemory();
};

} // namespace qrnplatform
