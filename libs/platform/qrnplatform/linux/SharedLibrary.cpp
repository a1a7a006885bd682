#include "qrnplatform/SharedLibrary.h"
#include "qrnplatform/Text.h"

#include <dlfcn.h>

namespace qrnplatform {

SharedLibrary::SharedLibrary(const std::wstring& path) : m_path(path) {
    // RTLD_NOW: a plug-in with unresolved symbols fails here rather than at its first call.
    m_handle = ::dlopen(Text::toUtf8(path).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!m_handle) {
        const char* reason = ::dlerror();
        m_error = reason ? Text::fromUtf8(reason) : L"cannot load " + path;
    }
}

void SharedLibrary::unload() {
    if (m_handle) {
        ::dlclose(m_handle);
        m_handle = nullptr;
    }
}

void* SharedLibrary::symbol(const char* name) const {
    if (!m_handle || !name)
        return nullptr;
    return ::dlsym(m_handle, name);
}

} // namespace qrnplatform
