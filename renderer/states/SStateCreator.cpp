#include "qrngl/states/SStateCreator.h"

#include "qrngl/SCClipping.h"
#include "qrngl/SCMarkupView.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/SCTriad.h"
#include "qrngl/section/SectionStateActivator.h"
#include "qrnglutils/CameraStateCreator.h"
#include "qrnglutils/ColorStateCreator.h"
#include "qrnglutils/SectionStateCreator.h"
#include "qrnglutils/TransparencyStateCreator.h"
#include "qrnglutils/VisibilityStateCreator.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneRes.h"
#include "qrnsg/SCSceneTopo.h"

namespace qrngl {

namespace {
bool fill(const std::shared_ptr<qrn::IState>& made, std::shared_ptr<qrn::IState>& state) {
    if (!made)
        return false;
    state = made;
    return true;
}
} // namespace

SStateCreator::SStateCreator(std::shared_ptr<qrn::IDocument> document)
    : m_document(std::move(document)) {}

SStateCreator::~SStateCreator() = default;

bool SStateCreator::getCameraState(std::shared_ptr<qrn::IState>& state) const {
    return fill(qrnglutils::CameraStateCreator(
                    qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER))
                    .create(),
                state);
}

bool SStateCreator::getVisibilityState(std::shared_ptr<qrn::IState>& state) const {
    return fill(qrnglutils::VisibilityStateCreator(
                    qrn::component<qrnsg::SCPmi>(m_document, qrnsg::SCHEMA_PMI),
                    qrn::component<qrnsg::SCSceneRT>(m_document, qrnsg::SCHEMA_SCENE_RT),
                    qrn::component<SCMarkupView>(m_document, qrnsg::SCHEMA_MARKUP_VIEW),
                    qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER))
                    .create(),
                state);
}

bool SStateCreator::getColorState(std::shared_ptr<qrn::IState>& state) const {
    return fill(qrnglutils::ColorStateCreator(
                    qrn::component<qrnsg::SCSceneRT>(m_document, qrnsg::SCHEMA_SCENE_RT),
                    qrn::component<qrnsg::SCSceneTopo>(m_document, qrnsg::SCHEMA_SCENE_TOPO),
                    qrn::component<qrnsg::SCSceneRes>(m_document, qrnsg::SCHEMA_SCENE_RES))
                    .create(),
                state);
}

bool SStateCreator::getTransparencyState(std::shared_ptr<qrn::IState>& state) const {
    return fill(qrnglutils::TransparencyStateCreator(
                    qrn::component<qrnsg::SCSceneRT>(m_document, qrnsg::SCHEMA_SCENE_RT),
                    qrn::component<qrnsg::SCSceneTopo>(m_document, qrnsg::SCHEMA_SCENE_TOPO),
                    qrn::component<qrnsg::SCSceneRes>(m_document, qrnsg::SCHEMA_SCENE_RES))
                    .create(),
                state);
}

bool SStateCreator::getTransformState(std::shared_ptr<qrn::IState>&) const {
    return qrn::component<qrnsg::SCSceneTopo>(m_document, qrnsg::SCHEMA_SCENE_TOPO) &&
           qrn::component<qrnsg::SCSceneRes>(m_document, qrnsg::SCHEMA_SCENE_RES);
}

bool SStateCreator::getSectionState(std::shared_ptr<qrn::IState>& state) const {
    std::weak_ptr<qrn::IDocument> document = m_document;
    return fill(qrnglutils::SectionStateCreator(
                    qrn::component<SCClipping>(m_document, qrnsg::SCHEMA_CLIPPING),
                    qrn::component<SCTriad>(m_document, qrnsg::SCHEMA_TRIAD),
                    [document](const std::shared_ptr<qrnsg::Section>& section) {
                        SectionStateActivator(
                            qrn::component<SCRenderer>(document.lock(), qrnsg::SCHEMA_RENDERER))
                            .execute(section);
                    })
                    .create(),
                state);
}

} // namespace qrngl
