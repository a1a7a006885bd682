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
class ModelImage;
class ClusterCuller;

// Draws the document's scene with the renderer component's pre- and post-renderers, at most
// one frame per Invalidate(). Closed solids are drawn front faces only while no clip plane is
// on; while the camera moves, frames keep within the renderer's frame budget. Overlays
// (IOverlay) are drawn last, over a kept image of the model when only they changed.
class QRNGL_EXPORT Canvas : public CanvasBase<> {
public:
    Canvas(std::shared_ptr<IRenderContext> context, std::shared_ptr<qrn::IDocument> document);
    ~Canvas() override;

    void OnDraw() const override;
    // Frees the kept image; with the context current.
    void OnDestroy() override;
    void OnSize(unsigned int x, unsigned int y, unsigned int width, unsigned int height) override;
    void Invalidate() override;

private:
    using Scene = std::shared_ptr<qrnsg::SCScene>;
    using Pmi = std::shared_ptr<qrnsg::SCPmi>;
    using SceneRT = std::shared_ptr<qrnsg::SCSceneRT>;
    using Renderer = std::shared_ptr<SCRenderer>;
    using Strips = std::shared_ptr<SCStripRenderer>;

    // False when only the overlays were drawn, over the kept model.
    bool render(const Scene&, const Pmi&, const SceneRT&, const Renderer&, const Strips&) const;
    // The pre-renderers, the scene and the renderers that are not overlays.
    void renderModel(const Scene&, const Pmi&, const SceneRT&, const Renderer&, const Strips&,
                     bool leaveOut) const;
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
    std::unique_ptr<ModelImage> m_image;
    std::unique_ptr<ClusterCuller> m_culler;
    mutable bool m_modelChanged = true;
    // The topology the parts' stencil values were assigned for.
    mutable const void* m_stencilTopology = nullptr;
    mutable std::size_t m_stencilNodes = 0;
    mutable std::size_t m_trianglesDrawn = 0;
};

} // namespace qrngl
