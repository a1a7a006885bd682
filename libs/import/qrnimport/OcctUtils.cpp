#include "qrnimport/OcctUtils.h"

#include "qrnmath/MatrixUtils.h"
#include "qrnplatform/Text.h"

#include <TCollection_AsciiString.hxx>
#include <TDF_Tool.hxx>
#include <TDataStd_Name.hxx>

namespace qrnimport {

qrnmath::Vec3 OcctUtils::toVec3(const gp_XYZ& p) {
    return qrnmath::Vec3(static_cast<float>(p.X()), static_cast<float>(p.Y()),
                         static_cast<float>(p.Z()));
}

qrnmath::Mat4 OcctUtils::toMat4(const gp_Trsf& t) {
    qrnmath::Mat4 m = qrnmath::MatrixUtils::identity();
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 4; ++c)
            m[c * 4 + r] = static_cast<float>(t.Value(r + 1, c + 1));
    return m;
}

// TCollection_ExtendedString is UTF-16; wchar_t is UTF-32 on Linux and UTF-16 on Windows.
std::wstring OcctUtils::toWide(const TCollection_ExtendedString& s) {
    std::wstring out;
    const Standard_ExtString p = s.ToExtString();
    const int n = s.Length();
    out.reserve(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        char32_t c = p[i];
        if constexpr (sizeof(wchar_t) >= 4) {
            if (c >= 0xD800 && c <= 0xDBFF && i + 1 < n && p[i + 1] >= 0xDC00 &&
                p[i + 1] <= 0xDFFF) {
                c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<char32_t>(p[i + 1]) - 0xDC00);
                ++i;
            } else if (c >= 0xD800 && c <= 0xDFFF) {
                c = 0xFFFD; // a lone surrogate
            }
        }
        out.push_back(static_cast<wchar_t>(c));
    }
    return out;
}

std::wstring OcctUtils::toWide(const Handle(TCollection_HAsciiString) & s) {
    return s.IsNull() ? std::wstring() : trim(qrnplatform::Text::fromUtf8(s->ToCString()));
}

std::wstring OcctUtils::trim(const std::wstring& s) {
    const auto first = s.find_first_not_of(L" \t\r\n");
    if (first == std::wstring::npos)
        return std::wstring();
    const auto last = s.find_last_not_of(L" \t\r\n");
    return s.substr(first, last - first + 1);
}

bool OcctUtils::labelName(const TDF_Label& label, std::wstring& name) {
    Handle(TDataStd_Name) attr;
    if (label.IsNull() || !label.FindAttribute(TDataStd_Name::GetID(), attr))
        return false;
    name = trim(toWide(attr->Get()));
    return !name.empty();
}

std::string OcctUtils::entry(const TDF_Label& label) {
    TCollection_AsciiString e;
    TDF_Tool::Entry(label, e);
    return e.ToCString();
}

} // namespace qrnimport
