#pragma once

#include "qrnsgutils/qrnsgutils_export.h"

#include <string>

namespace qrnsgutils {

// Texts shown to the user, from the string table of a library: its own resources on Windows,
// the table it registered elsewhere.
class QRNSGUTILS_EXPORT ResourceLoader {
public:
    ResourceLoader() = delete;

    // The library (or executable) that holds this address, as getString takes it: its HMODULE on
    // Windows.
    static const void* moduleOf(const void* address);

    // String `id` of the module's table in the language of the user's locale, falling back to
    // English; empty when the table has no such id.
    static std::wstring getString(const void* module, unsigned int id);
    // The same in a given Windows language id (0x0407 German, 0x0411 Japanese, ...).
    static std::wstring getString(const void* module, unsigned int id, unsigned short language);
};

} // namespace qrnsgutils
