#include "qrnsgutils/InfoUtils.h"

namespace qrnsgutils {

namespace {

struct UnitEntry {
    double metres;
    const wchar_t* name;
};

// In the order of SCInfo::UNITS.
const UnitEntry kUnits[] = {{0.001, L"mm"},  {0.01, L"cm"},    {1.0, L"m"},
                            {0.0254, L"in"}, {0.3048, L"ft"},  {1e-6, L"\u00b5m"},
                            {1000.0, L"km"}, {1609.344, L"mi"}};

const UnitEntry& entry(qrnsg::SCInfo::UNITS unit) {
    const auto i = static_cast<std::size_t>(unit);
    return i < sizeof kUnits / sizeof kUnits[0] ? kUnits[i] : kUnits[0];
}

} // namespace

float InfoUtils::getMeterToUnitFactor(qrnsg::SCInfo::UNITS unit) {
    return static_cast<float>(1.0 / entry(unit).metres);
}

std::wstring InfoUtils::getUnitName(qrnsg::SCInfo::UNITS unit) {
    return entry(unit).name;
}

double InfoUtils::toUnit(double length, const qrnsg::SCInfo& info, qrnsg::SCInfo::UNITS unit) {
    return length * entry(info.modelUnit).metres / entry(unit).metres;
}

} // namespace qrnsgutils
