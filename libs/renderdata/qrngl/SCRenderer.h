#pragma once

#include "qrngl/Camera.h"
#include "qrngl/ICanvas.h"
#include "qrngl/IManipulator.h"
#include "qrngl/IPickCanvas.h"
#include "qrngl/IPostRenderer.h"
#include "qrngl/IPreRenderer.h"
#include "qrngl/IRenderer.h"
#include "qrngl/ITexture.h"
#include "qrngldata/qrngldata_export.h"
#include "qrnsg/MMaterial.h"
#include "qrnsg/Schema.h"

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

namespace qrn {
class IDocument;
}

namespace qrngl {

// The renderer's own state in the document: camera, readiness, the single renderers of the
// frame, the ordered pre- and post-renderers, textures and display settings.
class QRNGLDATA_EXPORT SCRenderer : public qrnsg::Schema {
public:
    enum : unsigned char { READY = 1 };
    // How the frame draws the parts: faces and edges, faces only, edges only, or the edges
    // that no face hides.
    enum RENDERMODE : int { SHADED_WITH_EDGES, SHADED, WIREFRAME, HIDDEN_LINE };

    using PreRenderers = std::multiset<std::shared_ptr<IPreRenderer>, gtorder>;
    using PostRenderers = std::multiset<std::shared_ptr<IPostRenderer>, ltorder>;

    SCRenderer();
    std::shared_ptr<qrnsg::Schema> clone() const override;
    void clear() override;

    bool isReady() const { return (flags & READY) != 0; }
    void setReady(bool ready);

    // Equal orders keep the order of insertion (a multiset inserts at the upper bound).
    void addPreRenderer(const std::shared_ptr<IPreRenderer>& r);
    bool removePreRenderer(const std::shared_ptr<IPreRenderer>& r);
    void addPostRenderer(const std::shared_ptr<IPostRenderer>& r);
    bool removePostRenderer(const std::shared_ptr<IPostRenderer>& r);

    // The registered manipulators, kept sorted by order(), lowest first: the order in which
    // the host hands them each event, so that a tool that consumes a press keeps the camera
    // (800) from acting on it and a camera drag keeps the selection (1000) from selecting.
    void addManipulator(const std::shared_ptr<IManipulator>& m);
    bool removeManipulator(const std::shared_ptr<IManipulator>& m);
    // Tells the host that the view changed (it invalidates its canvases).
    void update() const;
    // Said by a tool whose change shows only in overlays (a highlight, a rubber band, a
    // label), before the host invalidates: the next frame then puts the model's image back and
    // draws the overlays over it. Invalidate takes the mark; any other change redraws all. A
    // host that handles several events before it invalidates says markModelChange for those
    // that changed the view without a mark, so that a later mark does not hide them.
    void markOverlayChange() {
        ++m_overlayMarks;
        m_overlayChange = !m_modelChange;
    }
    void markModelChange() {
        m_modelChange = true;
        m_overlayChange = false;
    }
    // How many marks were ever made: a host compares it around an event.
    unsigned long overlayMarks() const { return m_overlayMarks; }
    // The same for the document's renderer component, where it has one.
    static void markOverlayChange(const std::shared_ptr<qrn::IDocument>& document);
    bool takeOverlayChange() {
        const bool marked = m_overlayChange;
        m_overlayChange = m_modelChange = false;
        return marked;
    }

    std::shared_ptr<Camera> camera;
    unsigned char flags = 0;
    // The frame's single renderers, by the place each takes in it.
    std::shared_ptr<IRenderer> openingRenderer;
    std::shared_ptr<IRenderer> viewRenderer;
    std::shared_ptr<IRenderer> sceneSetupRenderer;
    std::shared_ptr<IRenderer> closingRenderer;
    PreRenderers preRenderers;
    PostRenderers postRenderers;
    // Tools' own scene renderers by id, drawn and picked after the post-renderers in id order
    // (the measurements and the points picked towards the next).
    enum : int { MEASURE_RENDERER = 1, MEASURE_POINTS_RENDERER = 2 };
    std::map<int, std::shared_ptr<IRenderer>> renderers;
    std::vector<std::shared_ptr<ITexture>> textures;
    int displayMode = 0;
    // The colour every frame is cleared to (red, green, blue).
    std::array<float, 3> background{{0.9f, 0.9f, 0.9f}};
    // Set: lines and texts are not drawn, unless the display mode is 1.
    bool suppressLinesAndTexts = false;
    RENDERMODE renderMode = SHADED_WITH_EDGES;
    // The mouse convention: 0 the library's own, 1 CATIA, 2 Pro/E, 3 Inventor, 4 NX,
    // 5 SolidWorks, 6 Solid Edge.
    int mouseStyle = 0;
    // Set while the camera moves under a drag or an animation.
    bool motion = false;
    // Set by the camera while it moves under a drag: frames may then leave out the parts
    // that look smallest and draw coarse meshes, to keep within the frame budget.
    bool sizeCulling = false;
    // Set: frames leave out the clusters of closed solids that face away from the eye or lie
    // outside the view (never with a clip plane on, never for open or transparent meshes).
    bool clusterCulling = true;
    // The time a frame in motion may take, in milliseconds; 0 draws every frame in full.
    double frameBudget = 33.0;
    // What the last frame drew and how long it took (the frame's own measure).
    struct FrameStats {
        double milliseconds = 0.0;
        std::size_t triangles = 0; // mesh triangles drawn
        std::size_t culled = 0;    // mesh instances left out for their size
        std::size_t coarse = 0;    // mesh instances drawn coarse
        std::size_t instances = 0; // mesh instances shown
        float cullRadius = 0.0f;   // pixels: smaller instances were left out
    };
    FrameStats lastFrame;
    std::vector<std::shared_ptr<IManipulator>> manipulators;
    // The canvases showing this document, first the main one.
    std::vector<std::weak_ptr<ICanvas>> canvases;
    // The canvas every pick of this document draws on; made by the canvas factory.
    std::shared_ptr<IPickCanvas> pickCanvas;
    // Set while the pointer rests on the clip plane: a drag or an arrow key then moves it.
    bool planePicked = false;
    // How sectioning is shown: colours red, green, blue, alpha.
    struct ClipSettings {
        std::array<float, 4> planeColour{{0.55f, 0.7f, 0.9f, 0.2f}};
        std::array<float, 4> pickedPlaneColour{{1.0f, 0.6f, 0.1f, 0.3f}};
        qrnsg::MMaterial capMaterial = qrnsg::MMaterial::fromColor(0.75f, 0.2f, 0.2f);
        std::array<float, 4> profileColour{{0.0f, 0.0f, 0.0f, 1.0f}};
        float profileWidth = 2.0f;
        std::array<float, 4> selectedProfileColour{{1.0f, 0.45f, 0.0f, 1.0f}};
        std::array<float, 4> planeBorderColour{{0.2f, 0.35f, 0.6f, 1.0f}};
    };
    ClipSettings clip;
    // Called by update().
    std::function<void()> updateNotifier;

private:
    bool m_overlayChange = false;
    bool m_modelChange = false;
    unsigned long m_overlayMarks = 0;
};

} // namespace qrngl
