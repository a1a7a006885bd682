#include "qrnplatform/Environment.h"

namespace qrnplatform {

namespace {

bool endsWithNoCase(const std::wstring& text, const std::wstring& lowerSuffix) {
    if (text.size() <= lowerSuffix.size())
        return false;
    const std::size_t offset = text.size() - lowerSuffix.size();
    for (std::size_t i = 0; i < lowerSuffix.size(); ++i) {
        wchar_t c = text[offset + i];
        if (c >= L'A' && c <= L'Z')
            c = static_cast<wchar_t>(c - L'A' + L'a');
        if (c != lowerSuffix[i])
            return false;
    }
    return true;
}

} // namespace

std::wstring Environment::executableBaseName() {
    const std::wstring path = executablePath();
#ifdef _WIN32
    const std::size_t slash = path.find_last_of(L"\\/");
#else
    const std::size_t slash = path.find_last_of(L'/');
#endif
    std::wstring name = slash == std::wstring::npos ? path : path.substr(slash + 1);
    // Dropped on every platform, so that a name gives the same settings key everywhere.
    if (endsWithNoCase(name, L".exe"))
        name.erase(name.size() - 4);
    return name;
}

} // namespace qrnplatform
