#include "qrnsg/SCFactory.h"

#include "qrnsg/SCAnimation.h"
#include "qrnsg/SCInfo.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneRes.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsg/SCTempGraphics.h"
#include "qrnsg/SCView.h"

namespace qrnsg {

SCFactory::SCFactory(std::shared_ptr<IFactory> next) : m_next(std::move(next)) {}

std::shared_ptr<Schema> SCFactory::create(short type) {
    switch (type) {
    case SCHEMA_SCENE:
        return std::make_shared<SCScene>();
    case SCHEMA_SCENE_RT:
        return std::make_shared<SCSceneRT>();
    case SCHEMA_PMI:
        return std::make_shared<SCPmi>();
    case SCHEMA_VIEW:
        return std::make_shared<SCView>();
    case SCHEMA_INFO:
        return std::make_shared<SCInfo>();
    case SCHEMA_SCENE_TOPO:
        return std::make_shared<SCSceneTopo>();
    case SCHEMA_SCENE_RES:
        return std::make_shared<SCSceneRes>();
    case SCHEMA_TEMP_GRAPHICS:
        return std::make_shared<SCTempGraphics>();
    case SCHEMA_ANIMATION:
        return std::make_shared<SCAnimation>();
    default:
        return m_next ? m_next->create(type) : nullptr;
    }
}

} // namespace qrnsg
