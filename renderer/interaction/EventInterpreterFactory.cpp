#include "interaction/EventInterpreterFactory.h"

#include "interaction/CATIAEventInterpreter.h"
#include "interaction/InventorEventInterpreter.h"
#include "interaction/NXEventInterpreter.h"
#include "interaction/ProEEventInterpreter.h"
#include "interaction/QrnEventInterpreter.h"
#include "interaction/SEEventInterpreter.h"
#include "interaction/SWEventInterpreter.h"

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
