#pragma once

#include "qrnplatform/qrnplatform_export.h"

#include <cstddef>
#include <string>
#include <vector>

namespace qrnplatform {

// String tables of the libraries, in several languages. On Windows they are the modules' own
// STRINGTABLE resources; elsewhere each library registers its table when it is loaded. Languages
// are Windows language ids (primary language in the low ten bits, sublanguage above), on every
// platform.
class QRNPLATFORM_EXPORT Resources {
public:
    Resources() = delete;

    // A loaded library or executable: the Windows HMODULE, or the base address of the shared
    // object elsewhere.
    using Module = const void*;
    enum : unsigned short { ENGLISH = 0x0409 };

    // The module holding this code or data address; null when none does.
    static Module moduleOf(const void* address);

    // String `id` of the module's table in `language`, else in another variant of that language,
    // else in English, else in whatever language the table has it; empty when it has no such id.
    static std::wstring string(Module module, unsigned int id, unsigned short language);

    // The language of the user's locale (the user interface language on Windows; LC_ALL,
    // LC_MESSAGES or LANG elsewhere); English when it cannot be told.
    static unsigned short userLanguage();
    // The language of a locale name such as "de_DE.UTF-8", "de-DE" or "ja"; 0 when unknown.
    static unsigned short languageOf(const std::string& locale);

    struct StringEntry {
        unsigned short language;
        unsigned int id;
        const wchar_t* text;
    };
    // Where modules have no resources of their own: a module's table, kept for the life of the
    // process (the entries are not copied).
    static void registerStrings(Module module, const StringEntry* entries, std::size_t count);

    // Of the languages a table has, the one `string` takes for `wanted`; 0 when it has none.
    static unsigned short chooseLanguage(unsigned short wanted,
                                         const std::vector<unsigned short>& available);
};

} // namespace qrnplatform
