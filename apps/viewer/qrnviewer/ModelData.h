#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/BBox.h"
#include "qrnsg/MMaterial.h"
#include "qrnsg/Mesh.h"
#include "qrnsg/Polyline.h"

#include <string>
#include <vector>

namespace qrnviewer {

// What the viewer knows of a model before it fills a document: parts with their geometry,
// and the assembly tree that places instances of them. A part used many times is held once.
struct ModelData {
    struct Part {
        std::wstring name;
        std::vector<qrnsg::Mesh> meshes; // one per material
        std::vector<int> meshMaterials;  // index into materials, per mesh
        qrnsg::Polyline edges;
        qrnsg::BBox bbox() const;
    };
    struct Node {
        std::wstring name;
        int parent = -1;
        qrnmath::Mat4 local; // placement in the parent, column-major
        int part = -1;       // -1 for an assembly node
    };

    std::vector<qrnsg::MMaterial> materials;
    std::vector<Part> parts;
    std::vector<Node> nodes; // parents before children
    std::wstring lengthUnit = L"mm";

    int addMaterial(const qrnsg::MMaterial& m);
    int addPart(Part part);
    int addNode(const std::wstring& name, int parent, const qrnmath::Mat4& local, int part = -1);
    // The placement of a node in the model: its parents' placements applied in turn.
    qrnmath::Mat4 worldTransform(int node) const;
    qrnsg::BBox bbox() const; // of every placed part
    std::size_t triangleCount() const; // of every placed part
    std::size_t instanceCount() const; // nodes that place a part
};

} // namespace qrnviewer
