#include "qrnimport/PmiText.h"

#include "qrnimport/OcctUtils.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <string>

namespace qrnimport {

namespace {

const wchar_t* const kDiameter = L"\u2300";
const wchar_t* const kDegree = L"\u00B0";

std::wstring signedNumber(double value) {
    std::wstring n = PmiText::number(std::abs(value));
    if (n == L"0")
        return n;
    return (value < 0 ? L"-" : L"+") + n;
}

std::wstring dimensionPrefix(XCAFDimTolObjects_DimensionType type) {
    switch (type) {
    case XCAFDimTolObjects_DimensionType_Size_Diameter:
    case XCAFDimTolObjects_DimensionType_Size_ToroidalMinorDiameter:
    case XCAFDimTolObjects_DimensionType_Size_ToroidalMajorDiameter:
    case XCAFDimTolObjects_DimensionType_Size_ToroidalHighMajorDiameter:
    case XCAFDimTolObjects_DimensionType_Size_ToroidalLowMajorDiameter:
        return kDiameter;
    case XCAFDimTolObjects_DimensionType_Size_SphericalDiameter:
        return std::wstring(L"S") + kDiameter;
    case XCAFDimTolObjects_DimensionType_Size_Radius:
    case XCAFDimTolObjects_DimensionType_Size_ToroidalMinorRadius:
    case XCAFDimTolObjects_DimensionType_Size_ToroidalMajorRadius:
    case XCAFDimTolObjects_DimensionType_Size_ToroidalHighMajorRadius:
    case XCAFDimTolObjects_DimensionType_Size_ToroidalLowMajorRadius:
        return L"R";
    case XCAFDimTolObjects_DimensionType_Size_SphericalRadius:
        return L"SR";
    default:
        return {};
    }
}

// An ISO fit such as "H7": the letters of the fundamental deviation (capitals for a hole) and
// the grade.
std::wstring fitText(bool hole, XCAFDimTolObjects_DimensionFormVariance variance,
                     XCAFDimTolObjects_DimensionGrade grade) {
    static const char* const kVariances[] = {"",  "A", "B",  "C", "CD", "D", "E",  "EF", "F", "FG",
                                             "G", "H", "JS", "J", "K",  "M", "N",  "P",  "R", "S",
                                             "T", "U", "V",  "X", "Y",  "Z", "ZA", "ZB", "ZC"};
    static const char* const kGrades[] = {"01", "0",  "1",  "2",  "3",  "4",  "5",
                                          "6",  "7",  "8",  "9",  "10", "11", "12",
                                          "13", "14", "15", "16", "17", "18"};
    const auto v = static_cast<std::size_t>(variance);
    const auto g = static_cast<std::size_t>(grade);
    if (v == 0 || v >= std::size(kVariances) || g >= std::size(kGrades))
        return {};
    std::string fit = kVariances[v];
    if (!hole)
        std::transform(fit.begin(), fit.end(), fit.begin(),
                       [](char c) { return static_cast<char>(c - 'A' + 'a'); });
    fit += kGrades[g];
    return std::wstring(fit.begin(), fit.end());
}

// The geometric characteristic's symbol, as a feature control frame's first compartment shows
// it; empty for a tolerance of no known kind.
std::wstring toleranceSymbol(XCAFDimTolObjects_GeomToleranceType type) {
    switch (type) {
    case XCAFDimTolObjects_GeomToleranceType_Angularity:
        return L"\u2220";
    case XCAFDimTolObjects_GeomToleranceType_CircularRunout:
        return L"\u2197";
    case XCAFDimTolObjects_GeomToleranceType_CircularityOrRoundness:
        return L"\u25CB";
    case XCAFDimTolObjects_GeomToleranceType_Coaxiality:
    case XCAFDimTolObjects_GeomToleranceType_Concentricity:
        return L"\u25CE";
    case XCAFDimTolObjects_GeomToleranceType_Cylindricity:
        return L"\u232D";
    case XCAFDimTolObjects_GeomToleranceType_Flatness:
        return L"\u23E5";
    case XCAFDimTolObjects_GeomToleranceType_Parallelism:
        return L"\u2225";
    case XCAFDimTolObjects_GeomToleranceType_Perpendicularity:
        return L"\u27C2";
    case XCAFDimTolObjects_GeomToleranceType_Position:
        return L"\u2316";
    case XCAFDimTolObjects_GeomToleranceType_ProfileOfLine:
        return L"\u2312";
    case XCAFDimTolObjects_GeomToleranceType_ProfileOfSurface:
        return L"\u2313";
    case XCAFDimTolObjects_GeomToleranceType_Straightness:
        return L"\u23E4";
    case XCAFDimTolObjects_GeomToleranceType_Symmetry:
        return L"\u232F";
    case XCAFDimTolObjects_GeomToleranceType_TotalRunout:
        return L"\u2330";
    default:
        return {};
    }
}

const wchar_t* characteristic(XCAFDimTolObjects_GeomToleranceType type) {
    switch (type) {
    case XCAFDimTolObjects_GeomToleranceType_Angularity:
        return L"angularity";
    case XCAFDimTolObjects_GeomToleranceType_CircularRunout:
        return L"circular runout";
    case XCAFDimTolObjects_GeomToleranceType_CircularityOrRoundness:
        return L"circularity";
    case XCAFDimTolObjects_GeomToleranceType_Coaxiality:
        return L"coaxiality";
    case XCAFDimTolObjects_GeomToleranceType_Concentricity:
        return L"concentricity";
    case XCAFDimTolObjects_GeomToleranceType_Cylindricity:
        return L"cylindricity";
    case XCAFDimTolObjects_GeomToleranceType_Flatness:
        return L"flatness";
    case XCAFDimTolObjects_GeomToleranceType_Parallelism:
        return L"parallelism";
    case XCAFDimTolObjects_GeomToleranceType_Perpendicularity:
        return L"perpendicularity";
    case XCAFDimTolObjects_GeomToleranceType_Position:
        return L"position";
    case XCAFDimTolObjects_GeomToleranceType_ProfileOfLine:
        return L"line profile";
    case XCAFDimTolObjects_GeomToleranceType_ProfileOfSurface:
        return L"surface profile";
    case XCAFDimTolObjects_GeomToleranceType_Straightness:
        return L"straightness";
    case XCAFDimTolObjects_GeomToleranceType_Symmetry:
        return L"symmetry";
    case XCAFDimTolObjects_GeomToleranceType_TotalRunout:
        return L"total runout";
    default:
        return L"geometric";
    }
}

} // namespace

std::wstring PmiText::dimensionWords(const Handle(XCAFDimTolObjects_DimensionObject) & d,
                                     const std::wstring& lengthUnit) {
    std::wstring name = givenName(d->GetSemanticName());
    if (name.empty())
        name = L"dimension";
    const Handle(TColStd_HArray1OfReal) values = d->GetValues();
    if (values.IsNull() || values->Length() == 0)
        return name;
    std::wstring value = dimension(d, lengthUnit);
    const std::wstring prefix = dimensionPrefix(d->GetType());
    if (!prefix.empty() && value.rfind(prefix, 0) == 0)
        value.erase(0, prefix.size());
    return name + L" " + value;
}

std::wstring PmiText::toleranceWords(const Handle(XCAFDimTolObjects_GeomToleranceObject) & t,
                                     const std::vector<std::wstring>& datums) {
    std::wstring text = std::wstring(characteristic(t->GetType())) + L" tolerance";
    if (t->GetValue() > 0.0)
        text += L" " + number(t->GetValue());
    if (!datums.empty()) {
        text += L" to";
        for (const auto& d : datums)
            text += L" " + d;
    }
    return text;
}

std::wstring PmiText::givenName(const Handle(TCollection_HAsciiString) & s) {
    std::wstring w = OcctUtils::toWide(s);
    return w.rfind(L"DGT:", 0) == 0 ? std::wstring() : w;
}

std::wstring PmiText::number(double value, int decimals) {
    char buffer[64];
    if (decimals > 0 && decimals < 10) {
        std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
    } else {
        std::snprintf(buffer, sizeof buffer, "%.6f", value);
        char* end = buffer + std::char_traits<char>::length(buffer);
        while (end > buffer && end[-1] == '0')
            *--end = '\0';
        if (end > buffer && end[-1] == '.')
            *--end = '\0';
    }
    std::string s(buffer);
    if (s.find_first_not_of("-0.") == std::string::npos)
        s.erase(0, s.find_first_not_of('-')); // no "-0"
    return std::wstring(s.begin(), s.end());
}

std::wstring PmiText::dimension(const Handle(XCAFDimTolObjects_DimensionObject) & d,
                                const std::wstring& lengthUnit) {
    Handle(TColStd_HArray1OfReal) values = d->GetValues();
    if (values.IsNull() || values->Length() == 0)
        return givenName(d->GetSemanticName()); // no value read: what kind of dimension it is
    const XCAFDimTolObjects_DimensionType type = d->GetType();
    const bool angular = type == XCAFDimTolObjects_DimensionType_Location_Angular ||
                         type == XCAFDimTolObjects_DimensionType_Size_Angular;
    const std::wstring degree = angular ? kDegree : L"";
    const std::wstring unit = angular || lengthUnit.empty() ? L"" : L" " + lengthUnit;
    int left = 0, right = 0;
    d->GetNbOfDecimalPlaces(left, right);

    std::wstring text = dimensionPrefix(type);
    const double lower = d->GetLowerBound(), upper = d->GetUpperBound();
    if (d->IsDimWithRange() && lower <= upper) {
        text += number(lower, right) + degree + L"\u2013" + number(upper, right) + degree;
    } else {
        text += number(d->GetValue(), right) + degree;
        if (d->IsDimWithPlusMinusTolerance()) {
            const double up = d->GetUpperTolValue(), down = d->GetLowerTolValue();
            if (std::abs(up - down) <= 1e-9 * std::max(1.0, std::abs(up)))
                text += L" \u00B1" + number(up) + degree;
            else // the lower tolerance is held as a distance below the nominal
                text += L" " + signedNumber(up) + degree + L"/" + signedNumber(-down) + degree;
        }
    }
    Standard_Boolean hole = Standard_False;
    XCAFDimTolObjects_DimensionFormVariance variance = XCAFDimTolObjects_DimensionFormVariance_None;
    XCAFDimTolObjects_DimensionGrade grade = XCAFDimTolObjects_DimensionGrade_IT01;
    if (d->IsDimWithClassOfTolerance() && d->GetClassOfTolerance(hole, variance, grade)) {
        std::wstring fit = fitText(hole == Standard_True, variance, grade);
        if (!fit.empty())
            text += L" " + fit;
    }
    return text + unit;
}

std::wstring PmiText::tolerance(const Handle(XCAFDimTolObjects_GeomToleranceObject) & t,
                                const std::vector<std::wstring>& datums) {
    const auto material = t->GetMaterialRequirementModifier();
    const std::wstring symbol = toleranceSymbol(t->GetType());
    std::wstring zone;
    // A zero zone is only meaningful at a material condition; else the value is missing.
    if (t->GetValue() > 0.0 || material != XCAFDimTolObjects_GeomToleranceMatReqModif_None) {
        if (t->GetTypeOfValue() == XCAFDimTolObjects_GeomToleranceTypeValue_Diameter)
            zone += kDiameter;
        else if (t->GetTypeOfValue() == XCAFDimTolObjects_GeomToleranceTypeValue_SphericalDiameter)
            zone += std::wstring(L"S") + kDiameter;
        zone += number(t->GetValue());
    }
    if (material == XCAFDimTolObjects_GeomToleranceMatReqModif_M)
        zone += L" \u24C2";
    else if (material == XCAFDimTolObjects_GeomToleranceMatReqModif_L)
        zone += L" \u24C1";
    if (symbol.empty() && zone.empty() && datums.empty())
        return {}; // says nothing
    std::wstring text = symbol.empty() ? std::wstring(L"?") : symbol;
    if (!zone.empty())
        text += L" | " + zone;
    for (const auto& d : datums)
        text += L" | " + d;
    return text;
}

} // namespace qrnimport
