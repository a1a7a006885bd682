#pragma once

#include "qrnsg/SCInfo.h"
#include "qrnsgutils/qrnsgutils_export.h"

#include <string>

namespace qrnsgutils {

// Length units: their size and their names.
class QRNSGUTILS_EXPORT InfoUtils {
public:
    // What one metre is in the unit; 1000 (millimetres) for a unit it does not know.
    static float getMeterToUnitFactor(qrnsg::SCInfo::UNITS unit);
    // The unit's short name ("mm", "in").
    static std::wstring getUnitName(qrnsg::SCInfo::UNITS unit);
    // A document length (in its coordinates' unit) in another unit.
    static double toUnit(double length, const qrnsg::SCInfo& info, qrnsg::SCInfo::UNITS unit);
};

} // namespace qrnsgutils
