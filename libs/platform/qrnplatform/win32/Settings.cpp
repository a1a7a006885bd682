#include "qrnplatform/Settings.h"

#include <windows.h>

namespace qrnplatform {

namespace {

// Closes the key however the function leaves.
class Key {
public:
    Key() = default;
    ~Key() {
        if (m_key)
            ::RegCloseKey(m_key);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    bool open(const std::wstring& path, REGSAM access) {
        return ::RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, access, &m_key) == ERROR_SUCCESS;
    }
    bool create(const std::wstring& path, REGSAM access = KEY_SET_VALUE) {
        return ::RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr,
                                 REG_OPTION_NON_VOLATILE, access, nullptr, &m_key,
                                 nullptr) == ERROR_SUCCESS;
    }
    HKEY get() const { return m_key; }

private:
    HKEY m_key = nullptr;
};

bool queryDword(HKEY key, const std::wstring& name, unsigned int& value) {
    DWORD type = 0;
    DWORD data = 0;
    DWORD size = sizeof data;
    if (::RegQueryValueExW(key, name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(&data),
                           &size) != ERROR_SUCCESS ||
        type != REG_DWORD || size != sizeof data)
        return false;
    value = data;
    return true;
}

} // namespace

std::wstring Settings::damage(const std::wstring&) {
    return {};
}

std::wstring Settings::location() const {
    return L"HKEY_CURRENT_USER\\" + keyPath();
}

bool Settings::readDword(const std::wstring& name, unsigned int& value) const {
    Key key;
    return key.open(keyPath(), KEY_QUERY_VALUE) && queryDword(key.get(), name, value);
}

bool Settings::readString(const std::wstring& name, std::wstring& value) const {
    Key key;
    DWORD type = 0;
    DWORD size = 0;
    if (!key.open(keyPath(), KEY_QUERY_VALUE) ||
        ::RegQueryValueExW(key.get(), name.c_str(), nullptr, &type, nullptr, &size) !=
            ERROR_SUCCESS ||
        (type != REG_SZ && type != REG_EXPAND_SZ))
        return false;
    std::wstring text(size / sizeof(wchar_t) + 1, L'\0');
    if (::RegQueryValueExW(key.get(), name.c_str(), nullptr, &type,
                           reinterpret_cast<BYTE*>(&text[0]), &size) != ERROR_SUCCESS)
        return false;
    text.resize(size / sizeof(wchar_t));
    while (!text.empty() && text.back() == L'\0')
        text.pop_back();
    value = text;
    return true;
}

Settings::Lookup Settings::readDwordCreatingKey(const std::wstring& name, unsigned int& value) {
    Key key;
    if (!key.create(keyPath(), KEY_ALL_ACCESS))
        return KEY_UNAVAILABLE;
    return queryDword(key.get(), name, value) ? VALUE_READ : VALUE_MISSING;
}

bool Settings::writeDword(const std::wstring& name, unsigned int value) {
    Key key;
    const DWORD data = value;
    return key.create(keyPath()) &&
           ::RegSetValueExW(key.get(), name.c_str(), 0, REG_DWORD,
                            reinterpret_cast<const BYTE*>(&data), sizeof data) == ERROR_SUCCESS;
}

bool Settings::removeValue(const std::wstring& name) {
    Key key;
    return key.open(keyPath(), KEY_SET_VALUE) &&
           ::RegDeleteValueW(key.get(), name.c_str()) == ERROR_SUCCESS;
}

} // namespace qrnplatform
