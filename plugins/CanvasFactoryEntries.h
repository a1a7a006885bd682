#pragma once

// The bodies of a renderer plug-in's two entry points for its factory class, so that each
// plug-in's "create" and "destroy" are one line each.
#include "qrngl/ICanvasFactory.h"

namespace qrnplugins {

template <class Factory>
long createFactory(void** object) {
    if (!object)
        return -1;
    *object = static_cast<qrngl::ICanvasFactory*>(new Factory);
    return 0;
}

inline long destroyFactory(void** object) {
    if (!object)
        return -1;
    delete static_cast<qrngl::ICanvasFactory*>(*object);
    *object = nullptr;
    return 0;
}

} // namespace qrnplugins
