#pragma once

#include "qrn/IDocument.h"
#include "qrn/IUpdater.h"
#include "qrngl/Handles.h"
#include "qrngl/IViewState.h"
#include "qrngl/qrngl_export.h"
#include "qrnmath/Tuple.h"
#include "qrnsg/BBox.h"
#include "qrnsg/SCView.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

namespace qrngl {

// Moves the camera smoothly to a standard orientation or a saved view, and plays sequences of
// them, one step per tick of timer 101 on the canvas window (the host routes those ticks to
// animate()). A segment goes from the current camera to one target in equal steps; the views
// of a sequence rest for 50 ticks between segments.
class QRNGL_EXPORT ViewState : public IViewState {
public:
    // What the current segment changes: bits.
    enum AnimateState : std::int32_t { ANIMATE_NONE = 0, ANIMATE_ROTATE = 1, ANIMATE_MOVE = 2 };
    enum : unsigned int { TIMER_ID = 101, TIMER_INTERVAL = 30 };
    // Hint code sent through the updater when a saved view is entered.
    enum : short { HINT_SAVED_VIEW = 20 };

    ViewState(HWND window, std::shared_ptr<qrn::IDocument> document,
              std::shared_ptr<qrn::IUpdater> updater);
    ~ViewState() override;
    ViewState(const ViewState&) = delete;
    ViewState& operator=(const ViewState&) = delete;

    // Stops everything and makes the current camera the target.
    void reset();
    void play(const qrnsg::SCView::ORIENTATION& orientation, int frames);
    void play(const int& view, int frames);
    void play(const std::deque<qrnsg::SCView::ORIENTATION>& orientations, int frames, bool loop);
    void play(const std::vector<int>& views, int frames, bool loop);
    void animate() override;
    // Turns the camera to the orientation at once.
    void set(const qrnsg::SCView::ORIENTATION& orientation);
    // Fits the visible scene at once.
    void zoomFit();
    bool isPlaying() const { return m_loop; }

private:
    // Prepare one segment towards the target; frames left, steps and targets follow.
    AnimateState reset(const qrnsg::SCView::ORIENTATION& orientation, int frames);
    AnimateState reset(const int& view, int frames);
    void getFitRadius(const qrnsg::BBox& box, const qrnmath::Vec3& centre, float& radius);
    // Sets the steps' state bits and the rotation step from the rotation the segment starts
    // at (given inverted) and the target rotation.
    AnimateState stepState(const qrnmath::Mat4& inverseStart, int frames);
    void stopTimer();
    void startTimer();

    std::shared_ptr<qrn::IDocument> m_document;
    std::shared_ptr<qrn::IUpdater> m_updater;
    AnimateState m_state;
    std::int32_t m_framesLeft;
    qrnmath::Vec3 m_translationStep;
    qrnmath::Vec3 m_centreStep;
    float m_radiusStep;
    float m_zoomStep;
    qrnmath::Vec4 m_rotationStep;
    float m_rotationFraction;
    qrnmath::Mat4 m_targetRotation;
    qrnmath::Vec3 m_targetCentre;
    float m_targetRadius;
    HWND m_window;
    bool m_loop;
    std::int32_t m_framesPerSegment;
    std::deque<qrnsg::SCView::ORIENTATION> m_orientationQueue;
    std::deque<int> m_viewQueue;
    std::int32_t m_queueKind;
    std::int32_t m_pause;
};

} // namespace qrngl
