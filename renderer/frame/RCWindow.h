#pragma once

#include "qrngl/IRenderContext.h"
#include "qrngl/qrngl_export.h"

#include <memory>

namespace qrngl {

// The context of the host's on-screen window: a 4-sample pixel format where the driver offers
// ARB pixel formats and multisampling, the classic one otherwise, sharing display lists with an
// optional parent. It never creates or destroys the window.
//
// On X11 the window is named by its id (an Xlib Window, carried in the HWND) and by the host's
// display connection; without a display the process's own connection to $DISPLAY is used
// (window ids hold on every connection to the server). An X window's visual is fixed when it
// is made, so where the chosen configuration has another visual than the host's window, the
// context draws on a child window of that visual, kept at the host window's size.
// currentDC() is the window drawn on, currentGLRC() the GLXContext. Windows ignores the display.
class QRNGL_EXPORT RCWindow : public IRenderContext {
public:
    RCWindow(HWND window, std::shared_ptr<IRenderContext> parent);
    RCWindow(HDISPLAY display, HWND window, std::shared_ptr<IRenderContext> parent);
    RCWindow(const RCWindow&);
    RCWindow& operator=(const RCWindow&);
    ~RCWindow() override;

    bool create() override;
    void destroy() override;
    void activate() override;
    // Presents the frame; the context stays current.
    void deactivate() override;
    HDC currentDC() const override;
    HGLRC currentGLRC() const override;

private:
    void logOpenglInfo();

    HWND m_window;
    HDC m_dc;
    HGLRC m_rc;
    std::shared_ptr<IRenderContext> m_parent;
    HDISPLAY m_display;
};

} // namespace qrngl
