#pragma once

// What the manipulator tests share: a host frame, a window for the animation, touch input.

#include "qrn/Document.h"
#include "qrngl/CameraHelper.h"
#include "qrngl/SCGLFactory.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/interaction/ViewState.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnplatform/Environment.h"
#include "qrnplatform/Input.h"
#include "qrnplatform/Text.h"
#include "qrnplatform/WindowTimer.h"
#include "qrnsg/SCFactory.h"
#include "qrnsg/SCView.h"
#include "qrnui/IFrame.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#ifdef _WIN32
#include <windows.h>
#endif

namespace qrntest {

class TestFrame : public qrnui::IFrame {
public:
    std::shared_ptr<qrn::IDocument> getDocument() const override { return document; }
    std::shared_ptr<qrnui::UndoStack> getUndoStack() const override { return undo; }
    std::shared_ptr<qrn::IUpdater> getUpdater() const override { return updater; }
    bool is2DViewer() const override { return is2D; }

    std::shared_ptr<qrn::Document> document = std::make_shared<qrn::Document>(
        std::make_shared<qrngl::SCGLFactory>(std::make_shared<qrnsg::SCFactory>()));
    std::shared_ptr<qrnui::UndoStack> undo = std::make_shared<qrnui::UndoStack>();
    std::shared_ptr<qrn::IUpdater> updater;
    bool is2D = false;
};

// Windows reads the real message information, which the thread's SetMessageExtraInfo sets.
inline void setTouchInput(bool touch) {
#ifdef _WIN32
    ::SetMessageExtraInfo(touch ? static_cast<LPARAM>(0xFF515700) : 0);
#else
    qrnplatform::Input::setTouchMessage(touch);
#endif
}

// A window of this thread for the view animation's timer: on Windows a hidden one, as the
// system's timers need one; elsewhere any address, as the host drives the timers.
class TestWindow {
public:
#ifdef _WIN32
    TestWindow()
        : m_hwnd(::CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 16, 16, nullptr, nullptr,
                                   ::GetModuleHandleW(nullptr), nullptr)) {}
    ~TestWindow() {
        ::DestroyWindow(m_hwnd);
    }
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;
    qrngl::HWND handle() const {
        return m_hwnd;
    }

private:
    HWND m_hwnd;
#else
    qrngl::HWND handle() const {
        return reinterpret_cast<qrngl::HWND>(const_cast<int*>(&m_dummy));
    }

private:
    int m_dummy = 0;
#endif
};

// Fresh settings of the running executable, where the manipulator keeps its operation.
inline void clearOperationSettings() {
#ifdef _WIN32
    const std::wstring app = qrnplatform::Environment::executableBaseName();
    ::RegDeleteTreeW(HKEY_CURRENT_USER, (L"Software\\" + app).c_str());
#else
    const std::string config = testing::TempDir() + "qrngl-" +
                               testing::UnitTest::GetInstance()->current_test_info()->name();
    std::error_code ignored;
    std::filesystem::remove_all(config, ignored);
    qrnplatform::Environment::setVariable(L"XDG_CONFIG_HOME", qrnplatform::Text::fromUtf8(config));
#endif
}

// The world point at window pixel (x, y) at the depth of the view sphere's centre.
inline qrnmath::Vec3 underPixel(const std::shared_ptr<qrngl::Camera>& camera, float x, float y) {
    const qrnmath::Mat4 toScreen = qrngl::CameraHelper::getModelToScreen(camera);
    qrnmath::Mat4 fromScreen;
    qrnmath::MatrixUtils::invert(toScreen, fromScreen);
    const float depth = qrnmath::MatrixUtils::transformPoint(toScreen, camera->sphereCentre())[2];
    return qrnmath::MatrixUtils::transformPoint(fromScreen, qrnmath::Vec3(x, y, depth));
}

inline void expectShownAt(const std::shared_ptr<qrngl::Camera>& camera, const qrnmath::Vec3& p,
                          float x, float y) {
    const qrnmath::Vec3 shown =
        qrnmath::MatrixUtils::transformPoint(qrngl::CameraHelper::getModelToScreen(camera), p);
    EXPECT_NEAR(shown[0], x, 0.05f);
    EXPECT_NEAR(shown[1], y, 0.05f);
}

// A 400 x 300 view of a sphere of radius 10 about the origin.
class ManipulatorTest : public ::testing::Test {
protected:
    void SetUp() override {
        renderer = std::dynamic_pointer_cast<qrngl::SCRenderer>(
            frame->document->addSchema(qrnsg::SCHEMA_RENDERER));
        views = std::dynamic_pointer_cast<qrnsg::SCView>(
            frame->document->addSchema(qrnsg::SCHEMA_VIEW));
        camera = renderer->camera;
        camera->setViewport(400, 300);
        qrngl::CameraHelper::lookAt(camera, qrnmath::Vec3(0.0f, 0.0f, 0.0f), 10.0f);
        viewState = std::make_shared<qrngl::ViewState>(window, frame->document, nullptr);
    }
    void TearDown() override {
        setTouchInput(false);
        viewState.reset();
    }
    unsigned int timer() const { return qrnplatform::WindowTimer::interval(window, 101); }

    std::shared_ptr<TestFrame> frame = std::make_shared<TestFrame>();
    std::shared_ptr<qrngl::SCRenderer> renderer;
    std::shared_ptr<qrnsg::SCView> views;
    std::shared_ptr<qrngl::Camera> camera;
    TestWindow testWindow;
    const qrngl::HWND window = testWindow.handle();
    std::shared_ptr<qrngl::ViewState> viewState;
};

} // namespace qrntest
