#include "qrnplatform/Settings.h"

namespace qrnplatform {

Settings::Settings(const std::wstring& subKey, const std::wstring& appName)
    : m_subKey(subKey), m_appName(appName) {}

std::wstring Settings::keyPath() const {
    std::wstring path = L"Software\\" + m_appName + L"\\" + m_appName;
    if (!m_subKey.empty())
        path += L"\\" + m_subKey;
    return path;
}

} // namespace qrnplatform
