#pragma once

#include "qrnimport/qrnimport_export.h"
#include "qrnmath/Tuple.h"
#include "qrnsg/BBox.h"
#include "qrnsg/MMaterial.h"
#include "qrnsg/Mesh.h"
#include "qrnsg/PartEntities.h"
#include "qrnsg/Polyline.h"
#include "qrnsg/Section.h"
#include "qrnsg/Text.h"

#include <string>
#include <utility>
#include <vector>

namespace qrnimport {

// A model as read, before a document is built from it: parts with their geometry, the
// assembly tree that places instances of them, PMI and saved views. A part used many times is
// held once.
struct QRNIMPORT_EXPORT ModelData {
    struct Part {
        std::wstring name;
        std::vector<qrnsg::Mesh> meshes; // one per material
        std::vector<int> meshMaterials;  // index into materials, per mesh
        qrnsg::Polyline edges;
        // Faces name meshes by their place in meshes, edges strips of edges.
        qrnsg::PartEntities entities;
        qrnsg::BBox bbox() const;
    };
    struct Node {
        std::wstring name;
        int parent = -1;
        qrnmath::Mat4 local; // placement in the parent, column-major
        int part = -1;       // -1 for an assembly node
    };

    // A PMI presentation (a dimension, a tolerance, a datum, a note) in model coordinates.
    struct PmiItem {
        enum Kind { DIMENSION, TOLERANCE, DATUM, NOTE, OTHER };
        std::wstring name;
        Kind kind = OTHER;
        qrnsg::Polyline lines;          // the graphical presentation
        std::vector<qrnsg::Text> texts; // its texts (values, frames, labels)
        // What it points at on the model, whether the file gave its annotation plane (the
        // texts' direction and up) and where its texts go; PmiLayout places the others.
        qrnmath::Vec3 target;
        bool hasTarget = false;
        bool hasPlane = false;
        bool textPlaced = false;
        qrnsg::Polyline leaders; // from the texts to the target, with the target's mark
        // Drawn as the file's author drew it: lines and filled areas (texts, arrowheads) in
        // the file's colour and width, with no texts of the viewer's own.
        bool presented = false;
        qrnsg::Mesh fills;
        qrnmath::Vec4 colour{0.0f, 0.0f, 0.0f, 1.0f};
        bool coloured = false;
        float lineWidth = 0.0f; // in the model's unit; 0: the viewer's own
        // What it says, for those who pick it ("diameter 20 +0.1/-0.05 mm").
        std::wstring description;
        // The placed faces it refers to: node and face index.
        std::vector<std::pair<int, int>> faces;
    };
    // A saved view of the file.
    struct SavedView {
        std::wstring name;
        qrnmath::Vec3 eye;
        qrnmath::Vec3 target;
        qrnmath::Vec3 up{0.0f, 0.0f, 1.0f};
        bool orthographic = true;
        float viewHeight = 0.0f; // world units; 0 when the file gives none
        // The PMI items (indices into pmi) the view shows, when the file lists them.
        bool listsPmi = false;
        std::vector<int> pmi;
    };

    std::vector<qrnsg::MMaterial> materials;
    std::vector<Part> parts;
    std::vector<Node> nodes; // parents before children
    std::vector<PmiItem> pmi;
    std::vector<SavedView> views;
    // The section views of the file: its named clipping planes.
    std::vector<qrnsg::Section> sections;
    // The unit of the coordinates, and the unit the file itself declares (empty: the same), in
    // which its lengths are shown.
    std::wstring lengthUnit = L"mm";
    std::wstring fileUnit;

    int addMaterial(const qrnsg::MMaterial& m);
    int addPart(Part part);
    int addNode(const std::wstring& name, int parent, const qrnmath::Mat4& local, int part = -1);
    // The placement of a node in the model: its parents' placements applied in turn.
    qrnmath::Mat4 worldTransform(int node) const;
    qrnsg::BBox bbox() const;          // of every placed part
    qrnsg::BBox extent() const;        // the parts' box and the PMI around them
    std::size_t triangleCount() const; // of every placed part
    std::size_t instanceCount() const; // nodes that place a part
};

} // namespace qrnimport
