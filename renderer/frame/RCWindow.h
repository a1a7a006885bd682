#pragma once

#include "qrngl/IRenderContext.h"
#include "qrngl/qrngl_export.h"

#include <memory>

#ifndef _WIN32
struct _XDisplay; // Xlib's Display
#endif

namespace qrngl {

// The context of the host's on-screen window: a 4-sample pixel format where the driver offers
// ARB pixel formats and multisampling, the classic one otherwise, sharing display lists with an
// optional parent. It never creates or destroys the window.
//
// On X11 the window is named by its id (an Xlib Window) and by the host's display connection:
// the X11 constructor takes both. The portable constructor takes the id in the HWND and works
// on the process's own connection to $DISPLAY (window ids hold on every connection to the
// server). currentDC() is then the window as a GLX drawable, currentGLRC() the GLXContext.
class QRNGL_EXPORT RCWindow : public IRenderContext {
public:
    RCWindow(HWND window, std::shared_ptr<IRenderContext> parent);
#ifndef _WIN32
    RCWindow(_XDisplay* display, unsigned long window, std::shared_ptr<IRenderContext> parent);
#endif
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
#ifndef _WIN32
    _XDisplay* m_display;
#endif
};

} // namespace qrngl
