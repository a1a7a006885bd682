#pragma once

#include "qrn/qrn_export.h"

#include <memory>

namespace qrn {

template <typename T>
class DLLFuncPtrHelper;

// A library loaded at run time that hands out objects through two plain entry points,
// long create(void** object) and long destroy(void** object), looked up by the names given.
// The library stays loaded while the helper lives.
template <>
class QRN_EXPORT DLLFuncPtrHelper<void> {
public:
    using Entry = long (*)(void**);

    DLLFuncPtrHelper(const wchar_t* path, const char* createName, const char* destroyName);
    ~DLLFuncPtrHelper();
    DLLFuncPtrHelper(const DLLFuncPtrHelper&) = delete;
    DLLFuncPtrHelper& operator=(const DLLFuncPtrHelper&) = delete;

    // The library was loaded and both entry points were found.
    bool isValid() const;
    // Calls the create entry, which stores a new object; -1 when the library is not valid.
    long create(void*& object) const;
    // Calls the destroy entry on the object; -1 when the library is not valid.
    long destroy(void*& object) const;

private:
    struct Library;
    std::unique_ptr<Library> m_library;
    Entry m_create = nullptr;
    Entry m_destroy = nullptr;
};

} // namespace qrn
