#pragma once

// The bodies of a renderer plug-in's two entry points for its factory class, so that each
// plug-in's "create" and "destroy" are one line each.
#include "qrngl/ICanvasFactory.h"

#include <new>

namespace qrnplugins {

template <class Factory>
long createFactory(void** object) {
    if (!object)
        return -1;
    // No exception may cross the plain entry point.
    *object = static_cast<qrngl::ICanvasFactory*>(new (std::nothrow) Factory);
    return *object ? 0 : -1;
}

inline long destroyFactory(void** object) {
    if (!object)
        return -1;
    delete static_cast<qrngl::ICanvasFactory*>(*object);
    *object = nullptr;
    return 0;
}

} // namespace qrnplugins
