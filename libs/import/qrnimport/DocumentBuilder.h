#pragma once

#include "qrn/Document.h"
#include "qrnviewer/MeshOptimizer.h"
#include "qrnviewer/ModelData.h"

#include <memory>
#include <string>

namespace qrnviewer {

// Fills a new document from model data: scene geometry (each part once), run-time state (one
// primitive per placed mesh and edge set, drawn in material order, transparent last),
// drawables, and a renderer component with a camera that fits the model. The scene's meshes
// are prepared for drawing with `meshes`, the parts on all cores.
class DocumentBuilder {
public:
    static std::shared_ptr<qrn::Document>
    build(const ModelData& model, const MeshOptimizer::Options& meshes = MeshOptimizer::Options());
    // The factory chain of a viewer document.
    static std::shared_ptr<qrnsg::IFactory> factoryChain();

private:
    // PMI items and saved views into their components; primitive ids continue from nextId.
    static void addPmi(const ModelData& model, qrn::Document& document, int& nextId);
};

} // namespace qrnviewer
