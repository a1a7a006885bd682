// Measurements on the demo assembly, whose dimensions its own modelling code gives.
#include "qrngl/SCMeasure.h"
#include "qrngl/measure/SmartMeasureManipulator.h"
#include "qrnimport/DemoAssembly.h"
#include "qrnimport/DocumentBuilder.h"
#include "qrnplatform/Text.h"
#include "qrnsg/SCSceneTopo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace {

using qrngl::MeasureRT;
using qrnsg::EntityNames;
using qrnsg::PartEntities;

struct Demo {
    Demo() {
        qrnimport::ModelData model;
        std::string error;
        EXPECT_TRUE(qrnimport::DemoAssembly::model(model, error)) << error;
        document = qrnimport::DocumentBuilder::build(model);
        topology = qrn::component<qrnsg::SCSceneTopo>(document, qrnsg::SCHEMA_SCENE_TOPO);
    }
    // The names of the faces of every placed instance of a node name that the test accepts.
    std::vector<unsigned int> faces(const std::wstring& node,
                                    const std::function<bool(const PartEntities::Surface&)>& is) {
        std::vector<unsigned int> out;
        for (std::size_t n = 0; n < topology->nodes.size(); ++n)
            if (const auto* part = topology->partOf(static_cast<int>(n)))
                if (topology->nodes[n].name == node)
                    for (std::size_t f = 0; f < part->entities.faces.size(); ++f)
                        if (is(part->entities.faces[f].surface))
                            out.push_back(topology->name(static_cast<int>(n), EntityNames::FACE,
                                                         static_cast<int>(f)));
        return out;
    }
    std::shared_ptr<MeasureRT> single(qrngl::SmartMeasureManipulator& smart, unsigned int name) {
        auto measure = qrn::component<qrngl::SCMeasure>(document, qrnsg::SCHEMA_MEASURE);
        measure->selection = {qrngl::EntityPick(EntityNames::FACE, static_cast<int>(name))};
        smart.measureSelectedEntities(0, 0, false);
        measure->tmpReset();
        return smart.last();
    }
    std::shared_ptr<qrn::IDocument> document;
    std::shared_ptr<qrnsg::SCSceneTopo> topology;
};

bool planeAlong(const PartEntities::Surface& s, int axis, float sign) {
    return s.type == PartEntities::Surface::PLANE && s.axis[axis] * sign > 0.99f;
}

TEST(MeasureDemoTest, PlateFacesTheShaftBoreOnBothBearingBlocksAndAVertex) {
    Demo demo;
    qrngl::SmartMeasureManipulator smart(demo.document, nullptr, nullptr);
    smart.setFilter(11);
    // The base plate is 12 thick; its top and a side meet square.
    const auto top = demo.faces(L"Base Plate", [](const auto& s) { return planeAlong(s, 2, 1); });
    const auto bottom =
        demo.faces(L"Base Plate", [](const auto& s) { return planeAlong(s, 2, -1); });
    const auto side = demo.faces(L"Base Plate", [](const auto& s) { return planeAlong(s, 0, 1); });
    ASSERT_FALSE(top.empty() || bottom.empty() || side.empty());
    auto r = smart.measurePair(top[0], bottom[0]);
    ASSERT_TRUE(r);
    EXPECT_NEAR(r->value, 12.0f, 1e-4f);
    EXPECT_TRUE(r->exact);
    EXPECT_EQ(qrnplatform::Text::toUtf8(r->text), "12.00  mm");
    r = smart.measurePair(top[0], side[0]);
    ASSERT_TRUE(r);
    EXPECT_THAT(qrnplatform::Text::toUtf8(r->text), ::testing::HasSubstr(";  Angle: 90.00 deg"));

    // The bore of the bearing block, placed twice 70 apart along the shaft: one radius, two
    // centres.
    const auto bores = demo.faces(L"Lagerbock \u00d820", [](const auto& s) {
        return s.type == PartEntities::Surface::CYLINDER && std::fabs(s.radius - 10.0f) < 1e-4f;
    });
    ASSERT_EQ(bores.size(), 2u);
    const auto first = demo.single(smart, bores[0]), second = demo.single(smart, bores[1]);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->type, MeasureRT::RADIUS);
    EXPECT_NEAR(first->value, 10.0f, 1e-4f);
    EXPECT_NEAR(second->value, 10.0f, 1e-4f);
    EXPECT_TRUE(first->exact);
    EXPECT_NEAR(std::fabs(first->points[0][0] - second->points[0][0]), 70.0f, 1e-3f);
    EXPECT_NEAR(first->points[0][2], 12.0f + 40.0f, 1e-3f) << "the shaft axis height";
    EXPECT_THAT(qrnplatform::Text::toUtf8(first->text),
                ::testing::StartsWith("R 10.00  mm\n\xc3\x98 20.00  mm\nCenter ("));

    // A vertex of the plate where the model places it.
    auto measure = qrn::component<qrngl::SCMeasure>(demo.document, qrnsg::SCHEMA_MEASURE);
    int plate = -1;
    for (std::size_t n = 0; n < demo.topology->nodes.size(); ++n)
        if (demo.topology->nodes[n].name == L"Base Plate")
            plate = static_cast<int>(n);
    const auto& vertex = demo.topology->partOf(plate)->entities.vertices.at(0);
    measure->selection = {qrngl::EntityPick(
        EntityNames::POINT, static_cast<int>(demo.topology->name(plate, EntityNames::POINT, 0)))};
    smart.measureSelectedEntities(0, 0, false);
    ASSERT_TRUE(smart.last());
    EXPECT_EQ(smart.last()->type, MeasureRT::POINT);
    EXPECT_NEAR(smart.last()->points[0][2], vertex[2] + 12.0f, 1e-4f) << "the plate sits on z 12";
    EXPECT_NEAR(smart.last()->points[0][0], vertex[0], 1e-4f);
}

} // namespace
