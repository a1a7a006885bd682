#pragma once

#include "qrnplatform/qrnplatform_export.h"

#include <string>

namespace qrnplatform {

// Conversions between UTF-8 and wide strings: UTF-32 where wchar_t has 32 bits, UTF-16 where it
// has 16. Malformed input never fails: each ill-formed sequence becomes U+FFFD.
class QRNPLATFORM_EXPORT Text {
public:
    Text() = delete;

    static std::string toUtf8(const std::wstring& text);
    static std::wstring fromUtf8(const std::string& text);
};

} // namespace qrnplatform
