#pragma once
// Not part of the library's interface: the graphical PMI of a STEP file as its author drew it,
// read from the STEP model itself (the reader of the XCAF document leaves most of it out).

#include "qrnimport/ModelData.h"

#include <StepData_StepModel.hxx>
#include <gp_Ax3.hxx>

#include <map>
#include <string>
#include <vector>

namespace qrnimport {

class PmiPresentation {
public:
    // One callout (or an annotation occurrence outside any callout): its polylines and filled
    // triangles in model coordinates, in the style the file gives.
    struct Annotation {
        std::wstring name;
        ModelData::PmiItem::Kind kind = ModelData::PmiItem::OTHER;
        // The semantic item the file links it to (a dimension, a tolerance, a datum feature,
        // a note's property), null for presentation alone.
        Handle(Standard_Transient) semantic;
        std::wstring datum; // a datum feature's letter
        qrnsg::Polyline lines;
        qrnsg::Mesh fills;
        qrnmath::Vec4 colour{0.0f, 0.0f, 0.0f, 1.0f};
        bool coloured = false;
        float width = 0.0f; // in the model's unit; 0 when the file gives none
        bool hasPlane = false;
        gp_Ax3 plane;
    };
    // What was read, as the file counts it.
    struct Counts {
        int polylines = 0;
        int fillSets = 0;
        int triangles = 0;
    };

    // Reads the model's annotations; path is the file, read again only when the reader left
    // the link from an occurrence to its geometry out. scale takes file lengths to the
    // model's unit.
    static PmiPresentation read(const Handle(StepData_StepModel) & step, const std::string& path,
                                double scale);

    std::vector<Annotation> annotations;
    // The annotations each saved view lists, by the view's name.
    std::map<std::wstring, std::vector<int>> views;
    // The semantic items in the file's order, as the XCAF reader makes its labels.
    std::vector<Handle(Standard_Transient)> dimensions, tolerances;
    // The zone of each tolerance that gives one, in the model's unit.
    std::map<const Standard_Transient*, double> magnitudes;
    Counts counts;
    // Whether items are drawn as the file draws them, or laid out from what they say.
    bool drawn = true;

    // The name the file gives a dimension or a tolerance, as the XCAF reader names its label.
    static std::wstring semanticName(const Handle(Standard_Transient) & semantic);
    // The annotation linked to a semantic item; -1 for none.
    int of(const Handle(Standard_Transient) & semantic) const;
};

} // namespace qrnimport
