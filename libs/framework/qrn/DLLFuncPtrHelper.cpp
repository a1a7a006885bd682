#include "qrn/DLLFuncPtrHelper.h"

#include "qrnplatform/SharedLibrary.h"

namespace qrn {

struct DLLFuncPtrHelper<void>::Library {
    explicit Library(const wchar_t* path) : shared(path ? path : L"") {}
    qrnplatform::SharedLibrary shared;
};

DLLFuncPtrHelper<void>::DLLFuncPtrHelper(const wchar_t* path, const char* createName,
                                         const char* destroyName)
    : m_library(std::make_unique<Library>(path)) {
    // An empty path would name the program itself (dlopen's rule), which is no plug-in.
    if (!path || !*path || !m_library->shared.isLoaded())
        return;
    m_create = m_library->shared.function<Entry>(createName);
    m_destroy = m_library->shared.function<Entry>(destroyName);
}

DLLFuncPtrHelper<void>::~DLLFuncPtrHelper() = default;

bool DLLFuncPtrHelper<void>::isValid() const {
    return m_create && m_destroy;
}

long DLLFuncPtrHelper<void>::create(void*& object) const {
    return isValid() ? m_create(&object) : -1;
}

long DLLFuncPtrHelper<void>::destroy(void*& object) const {
    return isValid() ? m_destroy(&object) : -1;
}

} // namespace qrn
