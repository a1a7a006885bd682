#pragma once

#include "qrn/IDocument.h"
#include "qrnsg/IActionFunctor.h"
#include "qrnsg/IFactory.h"

#include <memory>

namespace qrnglr3d {

// Readies a 3D document for drawing: makes its drawables component through the factory when
// the document has none, builds one drawable per mesh, polyline and point set of the scene
// when there are none yet, and, with an OpenGL context current, uploads their geometry so
// that no frame pays for it.
class SceneOptimizer : public qrnsg::IActionFunctor {
public:
    SceneOptimizer(std::shared_ptr<qrnsg::IFactory> factory,
                   std::shared_ptr<qrn::IDocument> document);
    bool operator()() override;

private:
    std::shared_ptr<qrnsg::IFactory> m_factory;
    std::shared_ptr<qrn::IDocument> m_document;
};

} // namespace qrnglr3d
