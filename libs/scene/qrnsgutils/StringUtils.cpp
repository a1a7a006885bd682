#include "qrnsgutils/StringUtils.h"

#include "qrnplatform/Text.h"

namespace qrnsgutils {

std::wstring StringUtils::convert(const std::string& text) {
    return qrnplatform::Text::fromUtf8(text);
}

std::string StringUtils::convert(const std::wstring& text) {
    std::string narrow(text.size(), '?');
    for (std::size_t i = 0; i < text.size(); ++i)
        if (static_cast<unsigned long>(text[i]) <= 0xFFu)
            narrow[i] = static_cast<char>(static_cast<unsigned char>(text[i]));
    return narrow;
}

} // namespace qrnsgutils
