#pragma once

#include "qrnmath/Tuple.h"

#include <TCollection_ExtendedString.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TDF_Label.hxx>
#include <gp_Trsf.hxx>
#include <gp_XYZ.hxx>

#include <string>

namespace qrnimport {

// Open CASCADE's points, placements and strings in the model data's terms.
class OcctUtils {
public:
    static qrnmath::Vec3 toVec3(const gp_XYZ& p);
    // Column-major, as the model data keeps placements.
    static qrnmath::Mat4 toMat4(const gp_Trsf& t);
    // UTF-16 to wide characters (UTF-32 on Linux), surrogate pairs joined.
    static std::wstring toWide(const TCollection_ExtendedString& s);
    // A file's UTF-8 text, without the blanks around it; empty for none.
    static std::wstring toWide(const Handle(TCollection_HAsciiString) & s);
    static std::wstring trim(const std::wstring& s);
    // The label's name without the blanks around it; false when it has none.
    static bool labelName(const TDF_Label& label, std::wstring& name);
    // The label's entry ("0:1:4:2"), which names it in maps.
    static std::string entry(const TDF_Label& label);
};

} // namespace qrnimport
