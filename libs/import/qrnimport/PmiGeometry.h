#pragma once

#include "qrnimport/ModelData.h"

#include <Bnd_Box.hxx>
#include <TDF_Label.hxx>
#include <TDocStd_Document.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Shape.hxx>
#include <XCAFDoc_DimTolTool.hxx>
#include <gp_Ax2.hxx>
#include <gp_Pnt.hxx>

#include <string>
#include <vector>

namespace qrnimport {

// Where a PMI item is in the model: its presentation's lines, where its text goes and what on
// the model it points at.
class PmiGeometry {
public:
    // What the file gives for an item's place. The text goes, from the most to the least
    // specific: at its text position, the centre of its presentation, its connection points,
    // the centre of the geometry it is on, the origin of its annotation plane.
    struct Sources {
        bool hasTextPoint = false;
        gp_Pnt textPoint;
        TopoDS_Shape presentation;
        std::vector<gp_Pnt> connections;
        Bnd_Box references;
        TopoDS_Compound referenced;    // the geometry it is on
        TopoDS_Compound first, second; // the same, parted as the label gives it (a distance's ends)
        bool hasPlane = false;
        gp_Ax2 plane;
    };

    // The edges of a presentation as line strips; edges that continue one another (the edges
    // of a wire) make one strip.
    static void addPresentation(const TopoDS_Shape& shape, qrnsg::Polyline& lines);
    // The geometry the item's label refers to.
    static void addReferences(const Handle(XCAFDoc_DimTolTool) & tool, const TDF_Label& label,
                              Sources& sources);
    // The item's text in its plane at its anchor, and the point it speaks of; nothing for an
    // empty text.
    static void addText(ModelData::PmiItem& item, const std::wstring& text, const Sources& sources);
    static bool centre(const Bnd_Box& box, gp_Pnt& centre);
    // What the geometry an item refers to measures, for a dimension the file gives no value:
    // a cylinder's diameter (or radius), else the distance between its two ends; false when
    // it measures nothing.
    static bool measure(const Sources& sources, bool radius, double& value, bool& round);
    // The box the saved views look at: the model's geometry when it has been read, else the
    // document's shapes.
    static Bnd_Box modelBox(const Handle(TDocStd_Document) & document, const ModelData& model);
};

} // namespace qrnimport
