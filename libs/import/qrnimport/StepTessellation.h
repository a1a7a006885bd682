#pragma once
// Not part of the library's interface: tessellated solids of a STEP file, which the reader of
// this Open CASCADE version does not know.

#include "qrnimport/ModelData.h"

#include <StepData_StepModel.hxx>

namespace qrnimport {

class StepTessellation {
public:
    // Adds each tessellated solid of the file as a part placed once at the root, its
    // triangulated faces as the part's faces (shells only when the file has no solid). scale
    // takes file lengths to the model's unit. Returns the number of parts added.
    static int addParts(const Handle(StepData_StepModel) & step, double scale, ModelData& model);
};

} // namespace qrnimport
