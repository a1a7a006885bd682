#include "qrnplatform/SharedLibrary.h"

#include <windows.h>

namespace qrnplatform {

namespace {

std::wstring systemMessage(DWORD code) {
    wchar_t* text = nullptr;
    const DWORD n = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, code, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::wstring message = n ? std::wstring(text, n) : std::wstring();
    if (text)
        ::LocalFree(text);
    while (!message.empty() && (message.back() == L'\n' || message.back() == L'\r' ||
                                message.back() == L' ' || message.back() == L'.'))
        message.pop_back();
    return message.empty() ? L"error " + std::to_wstring(code) : message;
}

bool isAbsolute(const std::wstring& path) {
    return (path.size() >= 3 && path[1] == L':' && (path[2] == L'\\' || path[2] == L'/')) ||
           (path.size() >= 2 && path[0] == L'\\' && path[1] == L'\\');
}

} // namespace

SharedLibrary::SharedLibrary(const std::wstring& path) : m_path(path) {
    // No "cannot find DLL" message box: a plug-in that does not load is reported, not shown.
    DWORD oldMode = 0;
    ::SetThreadErrorMode(SEM_FAILCRITICALERRORS, &oldMode);
    // With an absolute path the plug-in's own folder is searched for the DLLs it needs; that
    // search wants backslashes.
    std::wstring native = path;
    DWORD flags = 0;
    if (isAbsolute(path)) {
        flags = LOAD_WITH_ALTERED_SEARCH_PATH;
        for (wchar_t& c : native) {
            if (c == L'/')
                c = L'\\';
        }
    }
    HMODULE module = ::LoadLibraryExW(native.c_str(), nullptr, flags);
    const DWORD code = module ? 0 : ::GetLastError();
    ::SetThreadErrorMode(oldMode, nullptr);
    m_handle = reinterpret_cast<void*>(module);
    if (!module)
        m_error = path + L": " + systemMessage(code);
}

void SharedLibrary::unload() {
    if (m_handle) {
        ::FreeLibrary(static_cast<HMODULE>(m_handle));
        m_handle = nullptr;
    }
}

void* SharedLibrary::symbol(const char* name) const {
    if (!m_handle || !name)
        return nullptr;
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(m_handle), name));
}

} // namespace qrnplatform
