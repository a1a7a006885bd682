#pragma once

#include <TCollection_HAsciiString.hxx>
#include <XCAFDimTolObjects_DimensionObject.hxx>
#include <XCAFDimTolObjects_GeomToleranceObject.hxx>

#include <string>
#include <vector>

namespace qrnimport {

// The texts of PMI items as a drawing writes them.
class PmiText {
public:
    // A name the file gave: Open CASCADE's own placeholders of new labels ("DGT:...") are none.
    static std::wstring givenName(const Handle(TCollection_HAsciiString) & name);
    // A value with the file's decimal places when it gives them, else with no more digits than
    // it needs; never "-0".
    static std::wstring number(double value, int decimals = 0);
    // A dimension's value with its prefix (diameter, radius), tolerance or range, fit and unit;
    // the kind's name when the file gives no value.
    static std::wstring dimension(const Handle(XCAFDimTolObjects_DimensionObject) & dimension,
                                  const std::wstring& lengthUnit);
    // The same in words, for those who pick it: "diameter 20 +0.1/-0.05 mm".
    static std::wstring dimensionWords(const Handle(XCAFDimTolObjects_DimensionObject) & dimension,
                                       const std::wstring& lengthUnit);
    // "position tolerance 0.635 to A B C".
    static std::wstring toleranceWords(const Handle(XCAFDimTolObjects_GeomToleranceObject) &
                                           tolerance,
                                       const std::vector<std::wstring>& datums);
    // The feature control frame, its compartments parted by '|': characteristic, zone with its
    // material condition, datums in order; empty when it says nothing.
    static std::wstring tolerance(const Handle(XCAFDimTolObjects_GeomToleranceObject) & tolerance,
                                  const std::vector<std::wstring>& datums);
};

} // namespace qrnimport
