#include "qrnplatform/Resources.h"

#include <algorithm>
#include <cctype>

namespace qrnplatform {

namespace {

unsigned short primary(unsigned short language) {
    return static_cast<unsigned short>(language & 0x3FF);
}

} // namespace

unsigned short Resources::chooseLanguage(unsigned short wanted,
                                         const std::vector<unsigned short>& available) {
    if (available.empty())
        return 0;
    for (const unsigned short candidate : {wanted, static_cast<unsigned short>(ENGLISH)}) {
        if (std::find(available.begin(), available.end(), candidate) != available.end())
            return candidate;
        for (unsigned short a : available)
            if (candidate != 0 && primary(a) == primary(candidate))
                return a;
    }
    return available.front();
}

unsigned short Resources::languageOf(const std::string& locale) {
    // language[_-]REGION[.codeset][@modifier]
    std::string language, region;
    std::size_t i = 0;
    while (i < locale.size() && std::isalpha(static_cast<unsigned char>(locale[i])))
        language += static_cast<char>(std::tolower(static_cast<unsigned char>(locale[i++])));
    if (i < locale.size() && (locale[i] == '_' || locale[i] == '-'))
        while (++i < locale.size() && std::isalpha(static_cast<unsigned char>(locale[i])))
            region += static_cast<char>(std::toupper(static_cast<unsigned char>(locale[i])));
    static const struct {
        const char* code;
        unsigned short id;
    } languages[] = {{"en", 0x0409}, {"de", 0x0407}, {"fr", 0x040C}, {"it", 0x0410},
                     {"es", 0x0C0A}, {"ja", 0x0411}, {"ko", 0x0412}, {"zh", 0x0804},
                     {"pt", 0x0416}, {"nl", 0x0413}, {"ru", 0x0419}, {"pl", 0x0415},
                     {"cs", 0x0405}, {"sv", 0x041D}, {"tr", 0x041F}, {"hu", 0x040E}};
    for (const auto& l : languages)
        if (language == l.code) {
            if (language == "zh" && (region == "TW" || region == "HK" || region == "MO"))
                return 0x0404; // traditional script
            return l.id;
        }
    return 0;
}

} // namespace qrnplatform
