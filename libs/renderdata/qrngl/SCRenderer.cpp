#include "qrngl/SCRenderer.h"

#include "qrn/IDocument.h"

#include <algorithm>

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

void SCRenderer::markOverlayChange(const std::shared_ptr<qrn::IDocument>& document) {
    if (auto renderer = qrn::component<SCRenderer>(document, qrnsg::SCHEMA_RENDERER))
        renderer->markOverlayChange();
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

void SCRenderer::addManipulator(const std::shared_ptr<IManipulator>& m) {
    if (!m)
        return;
    auto at = std::upper_bound(
        manipulators.begin(), manipulators.end(), m,
        [](const std::shared_ptr<IManipulator>& a, const std::shared_ptr<IManipulator>& b) {
            return a->order() < b->order();
        });
    manipulators.insert(at, m);
}

bool SCRenderer::removeManipulator(const std::shared_ptr<IManipulator>& m) {
    auto it = std::find(manipulators.begin(), manipulators.end(), m);
    if (it == manipulators.end())
        return false;
    manipulators.erase(it);
    return true;
}

void SCRenderer::update() const {
    if (updateNotifier)
        updateNotifier();
}

} // namespace qrngl
