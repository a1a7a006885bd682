#include "qrnplatform/Text.h"

namespace qrnplatform {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr bool kUtf16 = sizeof(wchar_t) == 2;

bool isSurrogate(char32_t c) {
    return c >= 0xD800 && c <= 0xDFFF;
}

void appendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (c >> 12)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (c >> 18)));
        out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

void appendWide(std::wstring& out, char32_t c) {
    if (kUtf16 && c >= 0x10000) {
        c -= 0x10000;
        out.push_back(static_cast<wchar_t>(0xD800 + (c >> 10)));
        out.push_back(static_cast<wchar_t>(0xDC00 + (c & 0x3FF)));
    } else {
        out.push_back(static_cast<wchar_t>(c));
    }
}

} // namespace

std::string Text::toUtf8(const std::wstring& text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        // Through the unsigned type of the same width, so that a negative 32-bit wchar_t
        // cannot pass for a valid code point.
        char32_t c = kUtf16 ? static_cast<char32_t>(static_cast<char16_t>(text[i]))
                            : static_cast<char32_t>(text[i]);
        if (kUtf16 && c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size()) {
            const auto low = static_cast<char32_t>(static_cast<char16_t>(text[i + 1]));
            if (low >= 0xDC00 && low <= 0xDFFF) {
                c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
                ++i;
            }
        }
        if (isSurrogate(c) || c > 0x10FFFF)
            c = kReplacement;
        appendUtf8(out, c);
    }
    return out;
}

std::wstring Text::fromUtf8(const std::string& text) {
    std::wstring out;
    out.reserve(text.size());
    const std::size_t n = text.size();
    std::size_t i = 0;
    while (i < n) {
        const auto lead = static_cast<unsigned char>(text[i]);
        if (lead < 0x80) {
            out.push_back(static_cast<wchar_t>(lead));
            ++i;
            continue;
        }
        // The ranges allowed for the first continuation byte rule out overlong forms,
        // surrogates and code points above U+10FFFF.
        int trail = 0;
        char32_t c = 0;
        unsigned char low = 0x80;
        unsigned char high = 0xBF;
        if (lead >= 0xC2 && lead <= 0xDF) {
            trail = 1;
            c = lead & 0x1F;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            trail = 2;
            c = lead & 0x0F;
            if (lead == 0xE0)
                low = 0xA0;
            else if (lead == 0xED)
                high = 0x9F;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            trail = 3;
            c = lead & 0x07;
            if (lead == 0xF0)
                low = 0x90;
            else if (lead == 0xF4)
                high = 0x8F;
        } else {
            appendWide(out, kReplacement);
            ++i;
            continue;
        }
        ++i;
        bool valid = true;
        for (int k = 0; k < trail; ++k, ++i) {
            // A byte that breaks the sequence is not consumed: it may start the next one.
            if (i >= n) {
                valid = false;
                break;
            }
            const auto byte = static_cast<unsigned char>(text[i]);
            if (byte < low || byte > high) {
                valid = false;
                break;
            }
            c = (c << 6) | (byte & 0x3F);
            low = 0x80;
            high = 0xBF;
        }
        appendWide(out, valid ? c : kReplacement);
    }
    return out;
}

} // namespace qrnplatform
