#include <windows.h>

#include "qrnplatform/Resources.h"

namespace qrnplatform {

namespace {

BOOL CALLBACK collectLanguage(HMODULE, LPCWSTR, LPCWSTR, WORD language, LONG_PTR param) {
    reinterpret_cast<std::vector<unsigned short>*>(param)->push_back(language);
    return TRUE;
}

} // namespace

Resources::Module Resources::moduleOf(const void* address) {
    HMODULE module = nullptr;
    if (!address || !GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                            GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                                        static_cast<LPCWSTR>(address), &module))
        return nullptr;
    return module;
}

// Modules carry their own tables.
void Resources::registerStrings(Module, const StringEntry*, std::size_t) {}

std::wstring Resources::string(Module module, unsigned int id, unsigned short language) {
    if (!module)
        return {};
    HMODULE handle = static_cast<HMODULE>(const_cast<void*>(module));
    // A string table resource is a block of 16 counted UTF-16 strings; block n holds the
    // ids 16 (n - 1) to 16 n - 1.
    LPCWSTR block = MAKEINTRESOURCEW(id / 16 + 1);
    std::vector<unsigned short> available;
    EnumResourceLanguagesW(handle, MAKEINTRESOURCEW(6) /* RT_STRING */, block, &collectLanguage,
                           reinterpret_cast<LONG_PTR>(&available));
    const unsigned short chosen = chooseLanguage(language, available);
    HRSRC found = FindResourceExW(handle, MAKEINTRESOURCEW(6), block, chosen);
    HGLOBAL loaded = found ? LoadResource(handle, found) : nullptr;
    const auto* p = loaded ? static_cast<const WCHAR*>(LockResource(loaded)) : nullptr;
    if (!p)
        return {};
    const DWORD size = SizeofResource(handle, found) / sizeof(WCHAR);
    const WCHAR* end = p + size;
    for (unsigned int i = 0; i < id % 16; ++i) {
        if (p >= end)
            return {};
        p += 1 + *p;
    }
    if (p >= end || p + 1 + *p > end)
        return {};
    return std::wstring(p + 1, *p);
}

unsigned short Resources::userLanguage() {
    const LANGID language = GetUserDefaultUILanguage();
    return language ? language : static_cast<unsigned short>(ENGLISH);
}

} // namespace qrnplatform
