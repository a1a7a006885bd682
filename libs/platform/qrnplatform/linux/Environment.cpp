#include "qrnplatform/Environment.h"
#include "qrnplatform/Text.h"

#include <cstdlib>
#include <malloc.h>
#include <unistd.h>
#include <vector>

namespace qrnplatform {

std::wstring Environment::executablePath() {
    // readlink does not say whether it truncated, so grow until the answer fits.
    std::vector<char> buffer(256);
    for (;;) {
        const ssize_t n = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
        if (n < 0)
            return {};
        if (static_cast<std::size_t>(n) < buffer.size())
            return Text::fromUtf8(std::string(buffer.data(), static_cast<std::size_t>(n)));
        buffer.resize(buffer.size() * 2);
    }
}

std::wstring Environment::getVariable(const std::wstring& name) {
    const char* value = std::getenv(Text::toUtf8(name).c_str());
    return value ? Text::fromUtf8(value) : std::wstring();
}

bool Environment::setVariable(const std::wstring& name, const std::wstring& value) {
    return ::setenv(Text::toUtf8(name).c_str(), Text::toUtf8(value).c_str(), 1) == 0;
}

bool Environment::unsetVariable(const std::wstring& name) {
    return ::unsetenv(Text::toUtf8(name).c_str()) == 0;
}

void Environment::releaseFreedMemory() {
    malloc_trim(0);
}

} // namespace qrnplatform
