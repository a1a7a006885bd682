#pragma once

#include "qrnviewer/Sectioning.h"

#include "qrn/IDocument.h"
#include "qrnviewer/InputEvent.h"

#include <chrono>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

struct GLFWwindow;

namespace qrngl {
class ICanvas;
class Cursor;
} // namespace qrngl

namespace qrnviewer {

class EventRouter;
class RendererPlugins;
class ScreenshotContext;

// The interactive viewer: a GLFW window whose OpenGL context the library makes itself (GLX on
// the window's X11 id), the canvas on it, and an event loop that turns GLFW's mouse, wheel and
// key events into the tools' terms (MK_ flags, virtual-key codes, reported key state) for the
// event router, waits no longer than the next timer tick and draws when asked to.
class ViewerWindow {
public:
    struct Settings {
        unsigned int width = 1024, height = 768;
        std::string title = "qrnview";
        // Played through the router before the first frame.
        std::vector<InputEvent> replay;
        // Every event handed to the router is appended here as an event log.
        std::string record;
        // Draws one frame after the replay, writes it (read back before it is presented) and
        // closes.
        std::string screenshot;
        // PMI shown, and the saved view the camera starts in (-1: none).
        bool pmi = true;
        int savedView = -1;
        // The cut the model starts with.
        Sectioning::Settings section;
        bool explode = false;
        // A scene state restored before the first frame; the files F2 and F3 use.
        std::string state;
        std::string saveState;
    };

    // Whether a window can be opened: $DISPLAY set and its server answering; why not in reason.
    static bool displayAvailable(std::string& reason);

    // The canvas comes from the first plug-in that draws the document.
    ViewerWindow(std::shared_ptr<qrn::IDocument> document, const RendererPlugins& plugins);
    ~ViewerWindow();
    ViewerWindow(const ViewerWindow&) = delete;
    ViewerWindow& operator=(const ViewerWindow&) = delete;

    // Runs until the window is closed or the user quits: true. False with the reason in error
    // when the window, its context or the screenshot could not be made.
    bool run(const Settings& settings, std::string& error);

private:
    bool open(const Settings& settings, std::string& error);
    void close();
    void draw();
    void send(InputEvent event);
    unsigned int modifierFlags(int mods) const;

    static void onMouseButton(GLFWwindow* window, int button, int action, int mods);
    static void onCursorPos(GLFWwindow* window, double x, double y);
    static void onScroll(GLFWwindow* window, double dx, double dy);
    static void onKey(GLFWwindow* window, int key, int scancode, int action, int mods);
    static void onFramebufferSize(GLFWwindow* window, int width, int height);
    static void onRefresh(GLFWwindow* window);

    std::shared_ptr<qrn::IDocument> m_document;
    GLFWwindow* m_window = nullptr;
    bool m_glfw = false;
    std::shared_ptr<ScreenshotContext> m_context;
    const RendererPlugins& m_plugins;
    std::shared_ptr<qrngl::ICanvas> m_canvas;
    std::shared_ptr<qrngl::Cursor> m_cursor;
    std::unique_ptr<EventRouter> m_router;
    unsigned int m_buttons = 0; // MK_ bits of the buttons held
    int m_x = 0, m_y = 0;
    bool m_exposed = false;
    std::ofstream m_record;
    std::string m_recordPath;
    std::chrono::steady_clock::time_point m_start;
};

} // namespace qrnviewer
