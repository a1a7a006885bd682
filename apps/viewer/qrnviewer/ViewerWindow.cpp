#include "qrnviewer/ViewerWindow.h"

#include "qrngl/picking/PickCanvas.h"
#include "qrngl/picking/SelectManipulator.h"

#include "qrngl/Cursor.h"
#include "qrngl/ICanvasFactory.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/frame/RCWindow.h"
#include "qrnplatform/Input.h"
#include "qrnplatform/WindowTimer.h"
#include "qrnviewer/EventLog.h"
#include "qrnviewer/EventRouter.h"
#include "qrnviewer/MouseStyle.h"
#include "qrnviewer/RendererPlugins.h"
#include "qrnviewer/Replay.h"
#include "qrnviewer/SceneState.h"
#include "qrnviewer/ScreenshotContext.h"

#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>
#include <X11/Xlib.h>

// As glfw3native.h declares them; that header also wants the XRandR headers, for monitor
// functions the viewer has no use for.
extern "C" {
Display* glfwGetX11Display(void);
Window glfwGetX11Window(GLFWwindow* window);
}

#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace qrnviewer {

using qrngl::IEventInterpreter;
using qrnplatform::Input;

namespace {

// Windows virtual-key codes of the modifiers, reported as Windows does: one code for either
// side.
enum : unsigned int { VK_SHIFT = 0x10, VK_CONTROL = 0x11, VK_MENU = 0x12 };

// One notch of the wheel, as Windows counts it.
const int kWheelDelta = 120;

ViewerWindow* self(GLFWwindow* window) {
    return static_cast<ViewerWindow*>(glfwGetWindowUserPointer(window));
}

// The Windows virtual-key code of a GLFW key; 0 for keys the tools have no use for.
unsigned int virtualKey(int key, int scancode) {
    if ((key >= GLFW_KEY_A && key <= GLFW_KEY_Z) || (key >= GLFW_KEY_0 && key <= GLFW_KEY_9)) {
        // Windows names letter keys by the layout's letter, GLFW by the US key position.
        const char* name = glfwGetKeyName(key, scancode);
        if (name && name[0] && !name[1] && std::isalnum(static_cast<unsigned char>(name[0])))
            return static_cast<unsigned int>(std::toupper(static_cast<unsigned char>(name[0])));
        return static_cast<unsigned int>(key); // GLFW's codes are the ASCII ones here
    }
    if (key >= GLFW_KEY_F1 && key <= GLFW_KEY_F24)
        return 0x70u + static_cast<unsigned int>(key - GLFW_KEY_F1);
    if (key >= GLFW_KEY_KP_0 && key <= GLFW_KEY_KP_9)
        return 0x60u + static_cast<unsigned int>(key - GLFW_KEY_KP_0);
    switch (key) {
    case GLFW_KEY_ESCAPE:
        return 27;
    case GLFW_KEY_ENTER:
    case GLFW_KEY_KP_ENTER:
        return 0x0D;
    case GLFW_KEY_TAB:
        return 0x09;
    case GLFW_KEY_BACKSPACE:
        return 0x08;
    case GLFW_KEY_SPACE:
        return 0x20;
    case GLFW_KEY_PAGE_UP:
        return 0x21;
    case GLFW_KEY_PAGE_DOWN:
        return 0x22;
    case GLFW_KEY_END:
        return 0x23;
    case GLFW_KEY_HOME:
        return 0x24;
    case GLFW_KEY_LEFT:
        return 37;
    case GLFW_KEY_UP:
        return 38;
    case GLFW_KEY_RIGHT:
        return 39;
    case GLFW_KEY_DOWN:
        return 40;
    case GLFW_KEY_INSERT:
        return 0x2D;
    case GLFW_KEY_DELETE:
        return 0x2E;
    case GLFW_KEY_LEFT_SHIFT:
    case GLFW_KEY_RIGHT_SHIFT:
        return VK_SHIFT;
    case GLFW_KEY_LEFT_CONTROL:
    case GLFW_KEY_RIGHT_CONTROL:
        return VK_CONTROL;
    case GLFW_KEY_LEFT_ALT:
    case GLFW_KEY_RIGHT_ALT:
        return VK_MENU;
    case GLFW_KEY_LEFT_BRACKET:
        return 0xDB;
    case GLFW_KEY_RIGHT_BRACKET:
        return 0xDD;
    case GLFW_KEY_EQUAL:
        return 0xBB;
    case GLFW_KEY_MINUS:
        return 0xBD;
    case GLFW_KEY_KP_ADD:
        return 0x6B;
    case GLFW_KEY_KP_SUBTRACT:
        return 0x6D;
    default:
        return 0;
    }
}

// The other side's key of a modifier, so that releasing one Shift while the other is held
// does not release Shift.
int otherSide(int key) {
    switch (key) {
    case GLFW_KEY_LEFT_SHIFT:
        return GLFW_KEY_RIGHT_SHIFT;
    case GLFW_KEY_RIGHT_SHIFT:
        return GLFW_KEY_LEFT_SHIFT;
    case GLFW_KEY_LEFT_CONTROL:
        return GLFW_KEY_RIGHT_CONTROL;
    case GLFW_KEY_RIGHT_CONTROL:
        return GLFW_KEY_LEFT_CONTROL;
    case GLFW_KEY_LEFT_ALT:
        return GLFW_KEY_RIGHT_ALT;
    case GLFW_KEY_RIGHT_ALT:
        return GLFW_KEY_LEFT_ALT;
    default:
        return GLFW_KEY_UNKNOWN;
    }
}

void printGlfwError(int code, const char* text) {
    std::fprintf(stderr, "qrnview: GLFW error 0x%x: %s\n", code, text);
}

} // namespace

bool ViewerWindow::displayAvailable(std::string& reason) {
    const char* name = std::getenv("DISPLAY");
    if (!name || !*name) {
        reason = "DISPLAY is not set";
        return false;
    }
    Display* display = XOpenDisplay(nullptr);
    if (!display) {
        reason = std::string("cannot open display '") + name + "'";
        return false;
    }
    XCloseDisplay(display);
    return true;
}

ViewerWindow::ViewerWindow(std::shared_ptr<qrn::IDocument> document, const RendererPlugins& plugins)
    : m_document(std::move(document)), m_plugins(plugins) {}

ViewerWindow::~ViewerWindow() {
    close();
}

bool ViewerWindow::open(const Settings& settings, std::string& error) {
    auto factory = m_plugins.factoryFor(m_document);
    if (!factory) {
        error = m_plugins.noFactoryMessage();
        return false;
    }
    glfwSetErrorCallback(&printGlfwError);
    if (!glfwInit()) {
        error = "cannot initialise GLFW";
        return false;
    }
    m_glfw = true;
    // The library makes the OpenGL context on the window itself.
    glfwWindowHint(GLFW_CLIENT_API, GLFW_NO_API);
    m_window = glfwCreateWindow(static_cast<int>(settings.width), static_cast<int>(settings.height),
                                settings.title.c_str(), nullptr, nullptr);
    if (!m_window) {
        error = "cannot open a window";
        return false;
    }
    glfwSetWindowUserPointer(m_window, this);

    const Window xwindow = glfwGetX11Window(m_window);
    m_context = std::make_shared<ScreenshotContext>(std::make_shared<qrngl::RCWindow>(
        glfwGetX11Display(), reinterpret_cast<qrngl::HWND>(xwindow), nullptr));
    if (!m_context->create()) {
        error = "cannot make an OpenGL context on the window";
        m_context.reset();
        return false;
    }
    m_canvas = factory->createCanvas(m_context, m_document);
    if (!m_canvas) {
        error = "the renderer plug-in made no canvas for this document";
        return false;
    }
    auto renderer =
        std::dynamic_pointer_cast<qrngl::SCRenderer>(m_document->getSchema(qrnsg::SCHEMA_RENDERER));
    if (renderer) {
        renderer->canvases.push_back(m_canvas);
        // Picks draw on the window's context, between frames.
        renderer->pickCanvas = factory->createPickCanvas(m_context, m_document);
        if (renderer->pickCanvas)
            renderer->pickCanvas->OnCreate();
    }
    m_canvas->OnCreate();
    // With the window's context current: the drawables are uploaded before the first frame.
    if (auto optimize = factory->createOptimizer(nullptr, m_document))
        (*optimize)();
    int width = 0, height = 0;
    glfwGetFramebufferSize(m_window, &width, &height);
    if (width > 0 && height > 0)
        m_canvas->OnSize(0, 0, static_cast<unsigned int>(width), static_cast<unsigned int>(height));

    // Cursors by camera operation; the tools show them through the hook.
    m_cursor = std::make_shared<qrngl::Cursor>();
    const struct {
        IEventInterpreter::Operation operation;
        int shape;
    } shapes[] = {{IEventInterpreter::NONE, GLFW_ARROW_CURSOR},
                  {IEventInterpreter::ROTATE, GLFW_CROSSHAIR_CURSOR},
                  {IEventInterpreter::SPIN, GLFW_CROSSHAIR_CURSOR},
                  {IEventInterpreter::PAN, GLFW_HAND_CURSOR},
                  {IEventInterpreter::ZOOM, GLFW_VRESIZE_CURSOR},
                  {IEventInterpreter::ZOOMBOX, GLFW_CROSSHAIR_CURSOR},
                  {IEventInterpreter::BOXSELECT, GLFW_CROSSHAIR_CURSOR}};
    for (const auto& s : shapes)
        m_cursor->set(static_cast<int>(s.operation), glfwCreateStandardCursor(s.shape));
    GLFWwindow* window = m_window;
    m_cursor->setHook([window](qrngl::Cursor::Handle cursor) {
        glfwSetCursor(window, static_cast<GLFWcursor*>(cursor));
    });

    m_router = std::make_unique<EventRouter>(
        m_document, reinterpret_cast<void*>(static_cast<std::uintptr_t>(xwindow)), m_cursor);
    m_router->setMessageSink([](const std::string& text) {
        std::printf("qrnview: %s\n", text.c_str());
        std::fflush(stdout);
    });
    m_router->updateCursor();
    m_router->pmi().setView(settings.savedView);
    m_router->pmi().setShown(settings.pmi);
    if (settings.explode)
        m_router->explosion().explodeFully(nullptr);
    m_router->setStateFiles(settings.state, settings.saveState);
    if (!settings.state.empty() &&
        !SceneState(m_document, &m_router->explosion()).load(settings.state, error))
        return false;
    if (!m_router->section().apply(settings.section, error))
        return false;
    // Box selection through hidden entities reads the selection buffer instead.
    m_router->selectManipulator()->setSelectThroughCanvas(
        std::make_shared<qrngl::PickCanvas>(m_context, m_document));

    if (!settings.record.empty()) {
        // Written beside the old log and renamed over it at the end: a crash leaves the old
        // log whole and the new one's events in the ".new" file.
        m_recordPath = settings.record;
        m_record.open(m_recordPath + ".new");
        if (!m_record) {
            error = "cannot write the event log " + m_recordPath + ".new";
            return false;
        }
        m_record << EventLog::header();
    }

    glfwSetMouseButtonCallback(m_window, &ViewerWindow::onMouseButton);
    glfwSetCursorPosCallback(m_window, &ViewerWindow::onCursorPos);
    glfwSetScrollCallback(m_window, &ViewerWindow::onScroll);
    glfwSetKeyCallback(m_window, &ViewerWindow::onKey);
    glfwSetFramebufferSizeCallback(m_window, &ViewerWindow::onFramebufferSize);
    glfwSetWindowRefreshCallback(m_window, &ViewerWindow::onRefresh);
    m_start = std::chrono::steady_clock::now();
    return true;
}

void ViewerWindow::close() {
    // The tools leave the document before the canvas and the context go.
    m_router.reset();
    if (m_canvas) {
        auto renderer = std::dynamic_pointer_cast<qrngl::SCRenderer>(
            m_document->getSchema(qrnsg::SCHEMA_RENDERER));
        if (renderer)
            renderer->canvases.clear();
        // The canvases' buffers belong to the window's context.
        if (m_context)
            m_context->activate();
        if (renderer && renderer->pickCanvas)
            renderer->pickCanvas->OnDestroy();
        m_canvas->OnDestroy();
        if (m_context)
            m_context->deactivate();
        if (renderer)
            renderer->pickCanvas.reset();
        m_canvas.reset();
    }
    if (m_context) {
        m_context->destroy();
        m_context.reset();
    }
    if (m_cursor)
        m_cursor->setHook(nullptr);
    if (m_window) {
        glfwDestroyWindow(m_window);
        m_window = nullptr;
    }
    if (m_glfw) {
        glfwTerminate(); // also frees the cursors
        m_glfw = false;
    }
    if (m_record.is_open()) {
        m_record.close();
        std::error_code code;
        std::filesystem::rename(m_recordPath + ".new", m_recordPath, code);
        if (!m_record || code)
            std::fprintf(stderr, "qrnview: the event log stays in %s.new: %s\n",
                         m_recordPath.c_str(), code ? code.message().c_str() : "write failed");
    }
}

bool ViewerWindow::run(const Settings& settings, std::string& error) {
    if (!open(settings, error)) {
        close();
        return false;
    }
    std::printf("qrnview: mouse convention %s: %s\n%s", MouseStyle::name(m_router->mouseStyle()),
                MouseStyle::bindings(m_router->mouseStyle()), EventRouter::keyHelp());
    std::fflush(stdout);
    if (!settings.replay.empty())
        Replay::run(*m_router, settings.replay);
    if (!settings.screenshot.empty()) {
        // The frame after the replay, even one that ended with Q.
        m_context->grabNextFrame();
        draw();
        const bool saved = m_context->image().savePng(settings.screenshot, &error);
        close();
        return saved;
    }

    while (!glfwWindowShouldClose(m_window) && !m_router->quitRequested()) {
        const bool exposed = m_exposed;
        m_exposed = false;
        if (m_router->takeRepaint() || exposed)
            draw();
        const long long wait = qrnplatform::WindowTimer::timeToNextTick();
        if (wait < 0)
            glfwWaitEvents();
        else if (wait == 0)
            glfwPollEvents();
        else
            glfwWaitEventsTimeout(static_cast<double>(wait) / 1000.0);
        m_router->pump();
    }
    close();
    return true;
}

void ViewerWindow::draw() {
    m_canvas->Invalidate();
    m_canvas->OnDraw();
}

void ViewerWindow::send(InputEvent event) {
    event.time = static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                                std::chrono::steady_clock::now() - m_start)
                                                .count());
    if (m_record.is_open())
        m_record << EventLog::format(event) << '\n';
    m_router->route(event);
}

unsigned int ViewerWindow::modifierFlags(int mods) const {
    return m_buttons | ((mods & GLFW_MOD_SHIFT) ? qrngl::KEY_SHIFT : 0u) |
           ((mods & GLFW_MOD_CONTROL) ? qrngl::KEY_CONTROL : 0u);
}

void ViewerWindow::onMouseButton(GLFWwindow* window, int button, int action, int mods) {
    ViewerWindow* w = self(window);
    InputEvent e;
    unsigned int bit = 0;
    switch (button) {
    case GLFW_MOUSE_BUTTON_LEFT:
        e.button = qrngl::LEFT;
        bit = qrngl::KEY_LBUTTON;
        break;
    case GLFW_MOUSE_BUTTON_MIDDLE:
        e.button = qrngl::MIDDLE;
        bit = qrngl::KEY_MBUTTON;
        break;
    case GLFW_MOUSE_BUTTON_RIGHT:
        e.button = qrngl::RIGHT;
        bit = qrngl::KEY_RBUTTON;
        break;
    default:
        return;
    }
    // The flags tell the state after the event, as with the Windows button messages.
    if (action == GLFW_PRESS) {
        w->m_buttons |= bit;
        e.kind = InputEvent::BUTTON_DOWN;
    } else {
        w->m_buttons &= ~bit;
        e.kind = InputEvent::BUTTON_UP;
    }
    // Where GLFW last reported the pointer (it reports it on entering the window too).
    e.flags = w->modifierFlags(mods);
    e.x = w->m_x;
    e.y = w->m_y;
    w->send(e);
}

void ViewerWindow::onCursorPos(GLFWwindow* window, double x, double y) {
    ViewerWindow* w = self(window);
    InputEvent e;
    e.kind = InputEvent::MOTION;
    e.x = w->m_x = static_cast<int>(std::floor(x));
    e.y = w->m_y = static_cast<int>(std::floor(y));
    e.flags = w->m_buttons | (Input::isKeyDown(VK_SHIFT) ? qrngl::KEY_SHIFT : 0u) |
              (Input::isKeyDown(VK_CONTROL) ? qrngl::KEY_CONTROL : 0u);
    w->send(e);
}

void ViewerWindow::onScroll(GLFWwindow* window, double, double dy) {
    ViewerWindow* w = self(window);
    InputEvent e;
    e.kind = InputEvent::WHEEL;
    e.delta = static_cast<int>(std::lround(dy * kWheelDelta));
    if (e.delta == 0)
        return;
    e.flags = w->m_buttons | (Input::isKeyDown(VK_SHIFT) ? qrngl::KEY_SHIFT : 0u) |
              (Input::isKeyDown(VK_CONTROL) ? qrngl::KEY_CONTROL : 0u);
    e.x = w->m_x;
    e.y = w->m_y;
    w->send(e);
}

void ViewerWindow::onKey(GLFWwindow* window, int key, int scancode, int action, int) {
    ViewerWindow* w = self(window);
    InputEvent e;
    e.key = virtualKey(key, scancode);
    if (e.key == 0)
        return;
    if (action == GLFW_RELEASE) {
        const int other = otherSide(key);
        if (other != GLFW_KEY_UNKNOWN && glfwGetKey(window, other) == GLFW_PRESS)
            return;
        e.kind = InputEvent::KEY_UP;
    } else {
        e.kind = InputEvent::KEY_DOWN; // a held key repeats, as on Windows
    }
    e.x = w->m_x;
    e.y = w->m_y;
    w->send(e);
}

void ViewerWindow::onFramebufferSize(GLFWwindow* window, int width, int height) {
    ViewerWindow* w = self(window);
    if (width <= 0 || height <= 0 || !w->m_canvas)
        return;
    w->m_canvas->OnSize(0, 0, static_cast<unsigned int>(width), static_cast<unsigned int>(height));
    if (auto renderer = std::dynamic_pointer_cast<qrngl::SCRenderer>(
            w->m_document->getSchema(qrnsg::SCHEMA_RENDERER)))
        if (renderer->pickCanvas)
            renderer->pickCanvas->OnSize(0, 0, static_cast<unsigned int>(width),
                                         static_cast<unsigned int>(height));
    w->m_exposed = true;
}

void ViewerWindow::onRefresh(GLFWwindow* window) {
    self(window)->m_exposed = true;
}

} // namespace qrnviewer
