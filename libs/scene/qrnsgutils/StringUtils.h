#pragma once

#include "qrnsgutils/qrnsgutils_export.h"

#include <string>

namespace qrnsgutils {

class QRNSGUTILS_EXPORT StringUtils {
public:
    StringUtils() = delete;

    // Widens a narrow string, read as UTF-8 (plain ASCII, such as the strings OpenGL reports,
    // passes through unchanged); an ill-formed sequence becomes U+FFFD.
    static std::wstring convert(const std::string& text);
    // Narrows a wide string to one byte a character for display lists indexed by character
    // code: characters up to U+00FF keep their code (Latin-1), every other becomes '?'.
    static std::string convert(const std::wstring& text);
};

} // namespace qrnsgutils
