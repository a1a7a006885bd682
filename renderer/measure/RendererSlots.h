#pragma once
// Not part of the library's interface: how measuring tools share the renderer map.

#include "qrngl/SCRenderer.h"

#include <memory>

namespace qrngl {

// Registers a tool's renderer under an id unless one is there already (another tool's, or
// the host's, which then draws the measurements for all).
inline void addRenderer(SCRenderer& renderer, int id, const std::shared_ptr<IRenderer>& own) {
    if (own && !renderer.renderers.count(id))
        renderer.renderers[id] = own;
}

// Takes a tool's own renderer out of the map, leaving anyone else's.
inline void removeRenderer(SCRenderer& renderer, int id, const std::shared_ptr<IRenderer>& own) {
    auto found = renderer.renderers.find(id);
    if (found != renderer.renderers.end() && found->second == own)
        renderer.renderers.erase(found);
}

} // namespace qrngl
