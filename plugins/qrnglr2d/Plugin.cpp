// The plug-in's entry points: the host loads this library and takes its factory from "create",
// giving it back through "destroy".
#include "CanvasFactoryEntries.h"
#include "qrnglr2d/SheetCanvasFactory.h"
#include "qrnglr2d/qrnglr2d_export.h"

extern "C" {

QRNGLR2D_EXPORT long create(void** object) {
    return qrnplugins::createFactory<qrnglr2d::SheetCanvasFactory>(object);
}

QRNGLR2D_EXPORT long destroy(void** object) {
    return qrnplugins::destroyFactory(object);
}

} // extern "C"
