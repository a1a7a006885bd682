#pragma once

#include "qrn/IApplication.h"
#include "qrn/IDocument.h"
#include "qrngl/IManipulator.h"
#include "qrngl/IRendererFactory.h"
#include "qrngl/SCClipping.h"
#include "qrngl/qrngl_export.h"
#include "qrngl/section/PostClipRenderer.h"
#include "qrngl/section/PreClipRenderer.h"
#include "qrnsg/BBox.h"
#include "qrnsg/IPairFunctor.h"
#include "qrnsg/Section.h"

#include <memory>

namespace qrngl {

// Cuts the model with one clip plane: an axis plane or a section view's. Creates, removes,
// flips and caps the plane and turns its profile on and off; moves it along its normal while
// the pointer rests on it (a drag, the up and down arrows), never out of the model's bounding
// sphere. All state but the gesture in progress lives in the clipping component.
class QRNGL_EXPORT ClipManipulator : public IManipulator {
public:
    using PLANETYPE = SCClipping::PLANETYPE;
    enum : short { ORDER = 600 };
    enum : unsigned int { KEY_LEFT = 37, KEY_UP = 38, KEY_RIGHT = 39, KEY_DOWN = 40 };

    ClipManipulator(std::shared_ptr<qrn::IDocument> document, std::shared_ptr<Cursor> cursor);
    ~ClipManipulator() override;

    short order() const override { return ORDER; }
    // Removes the plane and forgets the gesture in progress.
    void init() override;
    // Creates the plane of a type (the section's for SECTION), or removes it for NONE.
    void setClipType(PLANETYPE type, const std::shared_ptr<qrnsg::Section>& section = nullptr);
    PLANETYPE getClipType() const { return m_type; }
    void flip();
    bool isFlipped() const;
    void cap();
    bool isCapped() const;
    void showProfile();
    void updateProfile();
    bool isProfile() const;
    // Moves the plane along its normal (against it when not forward).
    void offsetSection(double distance, bool forward);
    void setApp(const std::shared_ptr<qrn::IApplication>& application) { m_app = application; }
    bool setCursor() override;

    FrameStatus mouseButtonDown(FrameStatus status, unsigned int flags, MouseButton button, int x,
                                int y) override;
    FrameStatus mouseButtonUp(FrameStatus status, unsigned int flags, MouseButton button, int x,
                              int y) override;
    FrameStatus mouseMotion(unsigned int flags, int x, int y) override;
    FrameStatus keyDown(FrameStatus status, unsigned int key, unsigned int, unsigned int) override;
    FrameStatus keyUp(FrameStatus status, unsigned int key, unsigned int, unsigned int) override;
    FrameStatus mouseButtonDblClk(FrameStatus status, unsigned int flags, MouseButton button, int x,
                                  int y) override;
    FrameStatus mouseWheel(unsigned int flags, int delta, float factor) override;

    const std::shared_ptr<PreClipRenderer>& preRenderer() const { return m_pre; }
    const std::shared_ptr<PostClipRenderer>& postRenderer() const { return m_post; }

private:
    template <class T>
    std::shared_ptr<T> component(short type) const;
    void showProfile(bool on);
    qrnsg::BBox getRootBounds() const;
    qrnmath::Vec4 getClipPlane(const qrnsg::BBox& bounds, bool flipped,
                               std::shared_ptr<qrnsg::Mesh>& mesh,
                               std::shared_ptr<qrnsg::Polyline>& polyline) const;
    // Moves the plane by a translation unless that takes it out of the bounding sphere.
    bool translate(const qrnmath::Vec3& translation);
    // Whether the pointer rests on the plane, after a pick at it; true when that changed.
    bool hover(int x, int y);
    void reportOffset() const;

    std::shared_ptr<qrn::IDocument> m_document;
    int m_lastX = 0, m_lastY = 0;
    bool m_moved = false;
    PLANETYPE m_type = SCClipping::NONE;
    std::shared_ptr<IRendererFactory> m_factory;
    std::shared_ptr<PreClipRenderer> m_pre;
    std::shared_ptr<PostClipRenderer> m_post;
    bool m_profileWasOn = false;
    float m_keyStep = 0.0f;
    qrnsg::BBox m_bounds;
    std::shared_ptr<qrnsg::IPairFunctor> m_pairFunctor;
    std::shared_ptr<qrn::IApplication> m_app;
    int m_button = -1;       // held, -1 for none
    bool m_dragging = false; // a drag moved the plane since the press
};

} // namespace qrngl
