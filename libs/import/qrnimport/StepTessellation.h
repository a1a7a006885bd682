#pragma once
// Not part of the library's interface: tessellated solids of a STEP file, which the reader of
// this Open CASCADE version does not know.

#include "qrnimport/ModelData.h"

#include <Interface_UndefinedContent.hxx>
#include <StepData_StepModel.hxx>

#include <functional>
#include <vector>

namespace qrnimport {

class StepTessellation {
public:
    // Adds each tessellated solid of the file as a part placed once at the root, its
    // triangulated faces as the part's faces (shells only when the file has no solid). scale
    // takes file lengths to the model's unit. Returns the number of parts added.
    static int addParts(const Handle(StepData_StepModel) & step, double scale, ModelData& model);

    // The parameters of an entity the reader does not know (null for one it knows), and the
    // numbers of one of its lists.
    static Handle(Interface_UndefinedContent) content(const Handle(Standard_Transient) & entity);
    static std::vector<double> numbers(const Handle(Interface_UndefinedContent) & list);
    // The triangles of the index lists in parameters `strips` and `fans` of a tessellated
    // entity (0: none), each once, as the file numbers its points; a strip turns its order
    // every other triangle, a fan turns about its first point; degenerate ones are left out.
    static void triangles(const Handle(Interface_UndefinedContent) & entity, int strips, int fans,
                          const std::function<void(int, int, int)>& each);
};

} // namespace qrnimport
