#include "qrngl/interaction/EventInterpreterFactory.h"

#include "qrngl/interaction/CATIAEventInterpreter.h"
#include "qrngl/interaction/InventorEventInterpreter.h"
#include "qrngl/interaction/NXEventInterpreter.h"
#include "qrngl/interaction/ProEEventInterpreter.h"
#include "qrngl/interaction/QrnEventInterpreter.h"
#include "qrngl/interaction/SEEventInterpreter.h"
#include "qrngl/interaction/SWEventInterpreter.h"

namespace qrngl {

std::shared_ptr<IEventInterpreter> EventInterpreterFactory::create(int mouseStyle, bool is2D) {
    switch (mouseStyle) {
    case 1:
        return std::make_shared<CATIAEventInterpreter>(is2D);
    case 2:
        return std::make_shared<ProEEventInterpreter>(is2D);
    case 3:
        return std::make_shared<InventorEventInterpreter>(is2D);
    case 4:
        return std::make_shared<NXEventInterpreter>(is2D);
    case 5:
        return std::make_shared<SWEventInterpreter>(is2D);
    case 6:
        return std::make_shared<SEEventInterpreter>(is2D);
    default:
        return std::make_shared<QrnEventInterpreter>(is2D);
    }
}

} // namespace qrngl
