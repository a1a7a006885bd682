#include "qrngl/SCRenderer.h"

namespace qrngl {

SCRenderer::SCRenderer()
    : qrnsg::Schema(qrnsg::SCHEMA_RENDERER), camera(std::make_shared<Camera>()) {}

std::shared_ptr<qrnsg::Schema> SCRenderer::clone() const {
    auto copy = std::make_shared<SCRenderer>(*this);
    if (camera)
        copy->camera = std::make_shared<Camera>(*camera);
    return copy;
}

void SCRenderer::clear() {
    *this = SCRenderer();
}

void SCRenderer::setReady(bool ready) {
    flags = ready ? static_cast<unsigned char>(flags | READY)
                  : static_cast<unsigned char>(flags & ~READY);
}

void SCRenderer::addPreRenderer(const std::shared_ptr<IPreRenderer>& r) {
    if (r)
        preRenderers.insert(r);
}

bool SCRenderer::removePreRenderer(const std::shared_ptr<IPreRenderer>& r) {
    for (auto it = preRenderers.begin(); it != preRenderers.end(); ++it)
        if (*it == r) {
            preRenderers.erase(it);
            return true;
        }
    return false;
}

void SCRenderer::addPostRenderer(const std::shared_ptr<IPostRenderer>& r) {
    if (r)
        postRenderers.insert(r);
}

bool SCRenderer::removePostRenderer(const std::shared_ptr<IPostRenderer>& r) {
    for (auto it = postRenderers.begin(); it != postRenderers.end(); ++it)
        if (*it == r) {
            postRenderers.erase(it);
            return true;
        }
    return false;
}

} // namespace qrngl
