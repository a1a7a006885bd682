#pragma once

#include "qrnplatform/qrnplatform_export.h"

#include <string>

namespace qrnplatform {

// A library loaded at run time, such as a renderer plug-in; unloaded when destroyed.
class QRNPLATFORM_EXPORT SharedLibrary {
public:
    explicit SharedLibrary(const std::wstring& path);
    ~SharedLibrary();

    SharedLibrary(const SharedLibrary&) = delete;
    SharedLibrary& operator=(const SharedLibrary&) = delete;
    SharedLibrary(SharedLibrary&& other) noexcept;
    SharedLibrary& operator=(SharedLibrary&& other) noexcept;

    bool isLoaded() const { return m_handle != nullptr; }
    const std::wstring& path() const { return m_path; }
    // Why loading failed; empty when it did not.
    std::wstring error() const { return m_error; }

    // Address of an exported symbol; nullptr when it is absent or nothing is loaded.
    void* symbol(const char* name) const;

    template <typename Function>
    Function function(const char* name) const {
        return reinterpret_cast<Function>(symbol(name));
    }

private:
    void unload();

    void* m_handle = nullptr;
    std::wstring m_path;
    std::wstring m_error;
};

} // namespace qrnplatform
