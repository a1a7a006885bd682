#pragma once

#include "qrnplatform/Environment.h"
#include "qrnplatform/qrnplatform_export.h"

#include <string>

namespace qrnplatform {

// Per-user settings of the application, one key of values. On Windows the key is
// HKEY_CURRENT_USER\Software\<app>\<app>\<subKey>; elsewhere the section [<subKey>] of
// $XDG_CONFIG_HOME/<app>/settings.ini, with the same value names. Names compare without regard
// to ASCII case, as the registry's do.
class QRNPLATFORM_EXPORT Settings {
public:
    explicit Settings(const std::wstring& subKey,
                      const std::wstring& appName = Environment::executableBaseName());

    const std::wstring& subKey() const { return m_subKey; }
    const std::wstring& appName() const { return m_appName; }
    // L"Software\<app>\<app>\<subKey>"
    std::wstring keyPath() const;
    // Where the values live: the registry key or the settings file, for messages.
    std::wstring location() const;

    // False when the key or the value is missing or is not a 32-bit number; value is then
    // left as it was.
    bool readDword(const std::wstring& name, unsigned int& value) const;
    bool writeDword(const std::wstring& name, unsigned int value);
    // A text value (a folder, a name); false when the key or the value is missing or the
    // value is not text, leaving value as it was.
    bool readString(const std::wstring& name, std::wstring& value) const;

    // What readDwordCreatingKey found.
    enum Lookup { KEY_UNAVAILABLE, VALUE_MISSING, VALUE_READ };
    // Opens the key with full access, creating it when it is missing (on Windows one
    // RegCreateKeyExW), and reads the value from it. value is changed only with VALUE_READ.
    Lookup readDwordCreatingKey(const std::wstring& name, unsigned int& value);
    // False when there was no such value.
    bool removeValue(const std::wstring& name);

    // What is wrong with the application's settings file, for a warning: a file that is there
    // and cannot be read, or its first line that is neither a section, a value nor a comment.
    // Values are still read where they can be, so what is lost falls back to its default.
    // Empty when nothing is wrong, and always on Windows, whose registry has no such file.
    static std::wstring damage(const std::wstring& appName = Environment::executableBaseName());

private:
    std::wstring m_subKey;
    std::wstring m_appName;
};

} // namespace qrnplatform
