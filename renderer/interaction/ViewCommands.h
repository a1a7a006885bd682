#pragma once

#include "qrn/IDocument.h"
#include "qrn/IState.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/qrngl_export.h"
#include "qrnmath/Tuple.h"

#include <functional>
#include <memory>
#include <vector>

namespace qrnui {
class IFrame;
}

namespace qrngl {

class ViewState;

// The view commands beside the camera manipulator's drags: normal view, the point under the
// pointer, zoom to selection, hide, show all, isolate, render modes and projection. A camera
// or visibility change is one step on the frame's undo stack. The selection is given as entity
// names (SelectionSet::selected()); the commands pick through the renderer's pick canvas.
class QRNGL_EXPORT ViewCommands {
public:
    using RENDERMODE = SCRenderer::RENDERMODE;
    // Frames of the animated turn to a normal view.
    enum : int { VIEW_FRAMES = 50 };

    // The view state animates the normal view; without it the view turns at once.
    ViewCommands(std::shared_ptr<qrnui::IFrame> frame, std::shared_ptr<ViewState> viewState);

    // Runs before a command moves the camera (the camera manipulator stops its spin).
    void setBeforeCameraChange(std::function<void()> hook) { m_beforeChange = std::move(hook); }

    // When the face under the window point is planar, the view turns, animated, to look
    // straight at it (the NORMALVIEW click). False when it does not turn.
    bool activateNormalView(int x, int y);
    // Turns the view to look against a world normal, the up vector kept as near the current
    // one as can be. Animated as a standard view is, fitting the shown model; without the
    // view animation or the document's views it only turns, at once.
    bool doOrthoView(const qrnmath::Vec3& normal);
    // The world point of the face seen at the window point; false over empty space.
    bool getPointInWorld(int x, int y, qrnmath::Vec3& point) const;
    // Fits the view to the entities at once; false when they have no extent.
    bool zoomToSelection(const std::vector<unsigned int>& names);
    // Hide the entities' placed parts, show every part, or show only the entities' parts.
    // False when nothing changed.
    bool hideSelected(const std::vector<unsigned int>& names);
    bool showAll();
    bool isolate(const std::vector<unsigned int>& names);
    void changeRenderMode(RENDERMODE mode);
    RENDERMODE getRenderMode() const;
    // Orthographic to perspective and back; the scale at the view's centre stays.
    void changeProjection();

    // The camera's state now; null without a camera.
    std::shared_ptr<qrn::IState> cameraState() const;
    // One undo step from before to after on the frame's stack; false without either or the
    // stack.
    bool record(std::shared_ptr<qrn::IState> before, std::shared_ptr<qrn::IState> after) const;

private:
    std::shared_ptr<SCRenderer> renderer() const;
    // Records the visibility change since `before` and shows it.
    void recordVisibility(const std::shared_ptr<qrn::IState>& before) const;
    // Redraws and tells the document's listeners.
    void changed(SCRenderer& renderer) const;

    std::shared_ptr<qrnui::IFrame> m_frame;
    std::shared_ptr<qrn::IDocument> m_document;
    std::shared_ptr<ViewState> m_viewState;
    std::function<void()> m_beforeChange;
};

} // namespace qrngl
