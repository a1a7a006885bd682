#pragma once

#include "qrnplatform/Text.h"

#include <chrono>
#include <filesystem>
#include <random>
#include <string>

namespace platformtest {

#ifdef _WIN32
inline const std::wstring kSeparator = L"\\";
#else
inline const std::wstring kSeparator = L"/";
#endif

inline std::filesystem::path fsPath(const std::wstring& path) {
    return std::filesystem::u8path(qrnplatform::Text::toUtf8(path));
}

// A name no other run of the tests uses at the same time.
inline std::wstring uniqueName(const std::wstring& prefix) {
    static std::mt19937_64 random(std::random_device{}() ^
                                  static_cast<unsigned long long>(
                                      std::chrono::steady_clock::now().time_since_epoch().count()));
    return prefix + std::to_wstring(random() % 1000000000000ull);
}

// A fresh folder under the system's temporary folder, removed with everything in it.
class TempFolder {
public:
    TempFolder() {
        const std::filesystem::path base = std::filesystem::temp_directory_path();
        m_path = qrnplatform::Text::fromUtf8(base.u8string()) + kSeparator +
                 uniqueName(L"qrnplatform-test-");
        std::filesystem::create_directories(fsPath(m_path));
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(fsPath(m_path), ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::wstring& path() const { return m_path; }
    std::wstring operator/(const std::wstring& name) const { return m_path + kSeparator + name; }

private:
    std::wstring m_path;
};

} // namespace platformtest
