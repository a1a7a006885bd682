// The plug-in's entry points: the host loads this library and takes its factory from "create",
// giving it back through "destroy".
#include "CanvasFactoryEntries.h"
#include "qrnglr3d/Scene3DCanvasFactory.h"
#include "qrnglr3d/qrnglr3d_export.h"

extern "C" {

QRNGLR3D_EXPORT long create(void** object) {
    return qrnplugins::createFactory<qrnglr3d::Scene3DCanvasFactory>(object);
}

QRNGLR3D_EXPORT long destroy(void** object) {
    return qrnplugins::destroyFactory(object);
}

} // extern "C"
