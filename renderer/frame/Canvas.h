#pragma once

#include "qrngl/frame/CanvasBase.h"
#include "qrngl/qrngl_export.h"

#include <memory>

namespace qrnsg {
class SCScene;
class SCSceneRT;
class SCPmi;
} // namespace qrnsg

namespace qrngl {

class SCRenderer;
class SCStripRenderer;
class MotionGovernor;

// Draws the document's scene with the renderer component's pre- and post-renderers, at most
// one frame per Invalidate(). Closed solids are drawn front faces only while no clip plane is
// on; while the camera moves, frames keep within the renderer's frame budget.
class QRNGL_EXPORT Canvas : public CanvasBase<> {
public:
    Canvas(std::shared_ptr<IRenderContext> context, std::shared_ptr<qrn::IDocument> document);
    ~Canvas() override;

    void OnDraw() const override;

private:
    using Scene = std::shared_ptr<qrnsg::SCScene>;
    using Pmi = std::shared_ptr<qrnsg::SCPmi>;
    using SceneRT = std::shared_ptr<qrnsg::SCSceneRT>;
    using Renderer = std::shared_ptr<SCRenderer>;
    using Strips = std::shared_ptr<SCStripRenderer>;

    void render(const Scene&, const Pmi&, const SceneRT&, const Renderer&, const Strips&) const;
    void renderMeshes(const Scene&, const Pmi&, const SceneRT&, const Renderer&,
                      const Strips&) const;
    void renderPolylines(const Scene&, const Pmi&, const SceneRT&, const Renderer&,
                         const Strips&) const;
    // The meshes into the depth buffer only, for the hidden-line view.
    void renderDepthOnly(const Scene&, const Pmi&, const SceneRT&, const Renderer&,
                         const Strips&) const;
    void renderTexts(const Scene&, const Pmi&, const SceneRT&, const Renderer&,
                     const Strips&) const;
    // Draws the point sets as polylines are drawn; not part of the frame.
    void renderPoints(const Scene&, const Pmi&, const SceneRT&, const Renderer&,
                      const Strips&) const;

    std::unique_ptr<MotionGovernor> m_governor;
    mutable std::size_t m_trianglesDrawn = 0;
};

} // namespace qrngl
