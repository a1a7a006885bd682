#pragma once

#include "qrn/IDocument.h"
#include "qrngl/NamesInitializer.h"

#include <memory>

namespace qrngl {

class Camera;
class FilterResult;

// What the pick canvases share of a pass: the components a pass needs, the camera's matrices
// (behind a pick matrix where one is given), and the pair pickers run for an entity mask.
// Not installed.
class PickPass {
public:
    // False when a component the pass needs is missing.
    explicit PickPass(const std::shared_ptr<qrn::IDocument>& document);
    bool ready() const { return m_ready; }
    const std::shared_ptr<Camera>& camera() const { return m_camera; }

    // Loads the camera's projection, narrowed to the window rectangle of centre (cx, cy) and
    // size w x h (OpenGL window coordinates) when w > 0, and its view.
    void loadMatrices(double cx, double cy, double w, double h) const;
    // Draws the scene under entity names. In selection mode the passes run as the mask asks
    // (lines for edges or points, meshes for faces or points, vertices for points); an id
    // pass draws meshes and lines always, so that hidden entities stay hidden.
    // The pickers among the pre- and post-renderers take part: theirs after the matrices and
    // after the scene.
    void draw(NamesInitializer::Mode mode, unsigned short type) const;
    // Tells the pickers of the document what a pick chose.
    static void choose(const std::shared_ptr<qrn::IDocument>& document, const FilterResult& result);

private:
    std::shared_ptr<qrn::IDocument> m_document;
    std::shared_ptr<Camera> m_camera;
    bool m_ready = false;
};

} // namespace qrngl
