#include "qrnsgutils/StringUtils.h"

#include "qrnplatform/Text.h"

namespace qrnsgutils {

std::wstring StringUtils::convert(const std::string& text) {
    return qrnplatform::Text::fromUtf8(text);
}

} // namespace qrnsgutils
