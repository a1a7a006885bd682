#include "qrngl/states/SStateCreator.h"
#include "qrn/Document.h"
#include "qrngl/SCClipping.h"
#include "qrngl/SCGLFactory.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/SCTriad.h"
#include "qrnsg/SCFactory.h"
#include "qrnsg/SCSceneRT.h"

#include <gtest/gtest.h>

namespace {

using qrnsg::RTState;

std::shared_ptr<qrn::Document> document(std::initializer_list<short> types) {
    auto d = std::make_shared<qrn::Document>(
        std::make_shared<qrngl::SCGLFactory>(std::make_shared<qrnsg::SCFactory>()));
    for (short type : types)
        d->addSchema(type);
    return d;
}

TEST(SStateCreatorTest, EachCaptureNeedsItsComponentsAndPutsBackWhatItTook) {
    using Capture = bool (qrngl::SStateCreator::*)(std::shared_ptr<qrn::IState>&) const;
    const Capture captures[] = {
        &qrngl::SStateCreator::getCameraState,    &qrngl::SStateCreator::getVisibilityState,
        &qrngl::SStateCreator::getColorState,     &qrngl::SStateCreator::getTransparencyState,
        &qrngl::SStateCreator::getTransformState, &qrngl::SStateCreator::getSectionState};
    // Without components every capture fails and leaves the state as it was.
    qrngl::SStateCreator bare(document({}));
    for (Capture capture : captures) {
        std::shared_ptr<qrn::IState> state;
        EXPECT_FALSE((bare.*capture)(state));
        EXPECT_FALSE(state);
    }
    auto doc = document({qrnsg::SCHEMA_RENDERER, qrnsg::SCHEMA_SCENE_RT, qrnsg::SCHEMA_PMI,
                         qrnsg::SCHEMA_MARKUP_VIEW, qrnsg::SCHEMA_SCENE_TOPO,
                         qrnsg::SCHEMA_SCENE_RES, qrnsg::SCHEMA_CLIPPING, qrnsg::SCHEMA_TRIAD});
    qrngl::SStateCreator creator(doc);
    std::shared_ptr<qrn::IState> states[6];
    for (int i = 0; i < 6; ++i)
        EXPECT_TRUE((creator.*captures[i])(states[i])) << i;
    EXPECT_FALSE(states[4]) << "the transform capture makes no state";

    // What each took comes back: the camera's zoom, a hidden primitive, a material, a
    // transparent record and the draw order; the triad's placement.
    auto renderer = doc->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER);
    auto rt = doc->get<qrnsg::SCSceneRT>(qrnsg::SCHEMA_SCENE_RT);
    auto triad = doc->get<qrngl::SCTriad>(qrnsg::SCHEMA_TRIAD);
    rt->meshes.add(3, 0, 0);
    rt->addMeshMaterial(0, false);
    rt->addMeshMaterial(1, true);
    for (int i = 0; i < 6; ++i)
        if (i != 4)
            (creator.*captures[i])(states[i]);
    const float zoom = renderer->camera->zoomFactor();
    renderer->camera->setZoomFactor(zoom * 2.0f);
    *rt->meshes.flags.find(3) &= static_cast<unsigned char>(~RTState::VISIBLE);
    *rt->meshes.materials.find(3) = 1;
    rt->meshMaterialRecords[1].bytes[0] = 0;
    rt->meshes.drawOrder.clear();
    triad->shown = true;
    for (auto& state : states)
        if (state)
            state->restore();
    EXPECT_FLOAT_EQ(renderer->camera->zoomFactor(), zoom);
    EXPECT_TRUE(*rt->meshes.flags.find(3) & RTState::VISIBLE);
    EXPECT_EQ(*rt->meshes.materials.find(3), 0);
    EXPECT_TRUE(rt->meshMaterialRecords[1].isTransparent());
    EXPECT_EQ(rt->meshes.drawOrder, std::vector<int>{3});
    EXPECT_FALSE(triad->shown);
    EXPECT_FALSE(doc->get<qrngl::SCClipping>(qrnsg::SCHEMA_CLIPPING)->hasPlane());
}

} // namespace
