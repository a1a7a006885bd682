#include "qrngl/frame/RCWindow.h"

#include "qrn/LogManager.h"
#include "qrngl/GL.h"
#include "qrnsgutils/StringUtils.h"

namespace qrngl {

namespace {

std::wstring glText(GLenum name) {
    const GLubyte* text = glGetString(name);
    return qrnsgutils::StringUtils::convert(text ? reinterpret_cast<const char*>(text) : "");
}

} // namespace

// The same on every platform: what the driver says of itself, once the context is current.
void RCWindow::logOpenglInfo() {
    std::shared_ptr<qrn::ILogger> logger = qrn::LogManager::getInstance().getLogger();
    if (!logger->isEnabled())
        return;
    logger->log(L"OpenGL Version : " + glText(GL_VERSION));
    logger->log(glText(GL_VENDOR));
    logger->log(L"HWA: " + glText(GL_RENDERER));
}

} // namespace qrngl
