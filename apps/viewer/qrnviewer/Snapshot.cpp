#include "qrnviewer/Snapshot.h"

#include "qrngl/GL.h"
#include "qrngl/frame/PrintCanvas.h"
#include "qrngl/frame/RCBitmap.h"
#include "qrngl/frame/RCBuffer.h"
#include "qrnimage/Image.h"
#include "qrnviewer/RendererPlugins.h"
#include "qrnviewer/ViewerWindow.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace qrnviewer {

namespace {

// An off-screen context of the size: a pixel buffer on an X display (multisampled when asked
// and possible), else, or when the driver's pixel buffers are smaller, the headless bitmap.
std::shared_ptr<qrngl::IRenderContext> offScreenContext(unsigned int width, unsigned int height,
                                                        bool multisample, bool& pixelBuffer) {
    std::string reason;
    if (ViewerWindow::displayAvailable(reason)) {
        for (bool samples : {multisample, false}) {
            auto buffer = std::make_shared<qrngl::RCBuffer>(width, height, samples, nullptr);
            pixelBuffer = true;
            if (buffer->create())
                return buffer;
            buffer->destroy(); // what a failed create made
            if (!samples)
                break;
        }
    }
    pixelBuffer = false;
    auto bitmap = std::make_shared<qrngl::RCBitmap>(width, height);
    if (bitmap->create())
        return bitmap;
    bitmap->destroy();
    return nullptr;
}

// The largest picture the current context can draw.
void largestPicture(GLint& width, GLint& height) {
    GLint viewport[2] = {};
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    GLint renderbuffer = 0;
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &renderbuffer);
    width = renderbuffer > 0 ? std::min(viewport[0], renderbuffer) : viewport[0];
    height = renderbuffer > 0 ? std::min(viewport[1], renderbuffer) : viewport[1];
}

std::string tooLarge(const Snapshot::Settings& s) {
    GLint width = 0, height = 0;
    qrngl::RCBitmap probe(16, 16);
    if (probe.create()) {
        largestPicture(width, height);
        probe.destroy();
    }
    std::string message = "cannot draw a " + std::to_string(s.width) + "x" +
                          std::to_string(s.height) + " picture off screen";
    if (width > 0 && height > 0)
        return message + ": this OpenGL driver draws off-screen pictures of at most " +
               std::to_string(width) + "x" + std::to_string(height);
    return message + ": no off-screen OpenGL context could be made";
}

} // namespace

bool Snapshot::write(const std::shared_ptr<qrn::IDocument>& document, const Settings& settings,
                     const RendererPlugins& plugins, const std::string& path, std::string& error,
                     std::string* how) {
    auto factory = plugins.factoryFor(document);
    if (!factory) {
        error = plugins.noFactoryMessage();
        return false;
    }
    bool pixelBuffer = false;
    auto context =
        offScreenContext(settings.width, settings.height, settings.multisample, pixelBuffer);
    if (!context) {
        error = tooLarge(settings);
        return false;
    }
    GLint maxWidth = 0, maxHeight = 0;
    largestPicture(maxWidth, maxHeight);
    GLint samples = 0;
    glGetIntegerv(GL_SAMPLES, &samples);
    if (static_cast<GLint>(settings.width) > maxWidth ||
        static_cast<GLint>(settings.height) > maxHeight) {
        context->destroy();
        error = tooLarge(settings);
        return false;
    }

    auto canvas = factory->createPrintCanvas(context, document);
    auto print = std::dynamic_pointer_cast<qrngl::PrintCanvas>(canvas);
    if (!print) {
        context->destroy();
        error = "the renderer plug-in has no print canvas for this document";
        return false;
    }
    print->setTransparent(settings.transparent);
    print->OnCreate();
    print->OnSize(0, 0, settings.width, settings.height);
    // With the context current, so that the drawables are uploaded before the frame.
    if (auto optimize = factory->createOptimizer(nullptr, document))
        (*optimize)();
    if (settings.beforeFrame) {
        settings.beforeFrame(context, *factory);
        context->activate();
    }
    print->OnDraw();
    qrnimage::Image image(settings.width, settings.height);
    const bool drawn =
        print->pixels().size() == static_cast<std::size_t>(settings.width) * settings.height * 4;
    if (drawn)
        std::memcpy(image.pixel(0, 0), print->pixels().data(), print->pixels().size());
    print->OnDestroy();
    print.reset();
    canvas.reset();
    context->destroy();
    if (!drawn) {
        error = "the document could not be drawn";
        return false;
    }
    if (how)
        *how = std::string(pixelBuffer ? "pixel buffer" : "headless bitmap context") +
               (samples > 1 ? ", " + std::to_string(samples) + " samples" : "") +
               (settings.transparent ? ", transparent background" : "");
    if (settings.multisample && samples <= 1)
        std::fprintf(stderr, "qrnview: %s\n",
                     pixelBuffer ? "this OpenGL driver has no multisampled pixel buffers; drawn "
                                   "without multisampling"
                                 : "multisampling needs a pixel buffer on an X display, of at "
                                   "most the driver's pixel-buffer size; drawn without it");
    return path.empty() || image.savePng(path, &error);
}

bool Snapshot::write(const std::shared_ptr<qrn::IDocument>& document, unsigned int width,
                     unsigned int height, const std::string& path, std::string& error) {
    Settings settings;
    settings.width = width;
    settings.height = height;
    return write(document, settings, RendererPlugins::shared(), path, error);
}

} // namespace qrnviewer
