#include "qrnsg/EntityNames.h"
#include "qrnsg/SCSceneTopo.h"

#include <gtest/gtest.h>

namespace qrnsg {
namespace {

TEST(EntityNamesTest, EveryNameResolvesToItsNodeKindAndIndexWithinTheNumberSpace) {
    // An assembly node without a part, a part with exactly one block of faces, one crossing a
    // block boundary, and a node numbered last.
    EntityNames names;
    ASSERT_TRUE(
        names.assign({{0, 0, 0, 0, 0}, {0, 0, 8, 12, 256}, {0, 0, 3, 0, 257}, {0, 0, 1, 1, 1}}));
    for (int node = 0; node < 4; ++node)
        for (unsigned kind : {EntityNames::POINT, EntityNames::EDGE, EntityNames::FACE})
            for (int index = 0; index < 300; ++index) {
                const unsigned name = names.name(node, kind, index);
                const EntityNames::Entity e = names.resolve(name);
                if (name == 0) {
                    EXPECT_FALSE(e.valid());
                    continue;
                }
                EXPECT_EQ(EntityNames::kindOf(name), kind);
                EXPECT_EQ(e.node, node);
                EXPECT_EQ(e.kind, kind);
                EXPECT_EQ(e.index, index);
            }
    EXPECT_EQ(names.name(1, EntityNames::FACE, 256), 0u) << "past the part's faces";
    EXPECT_NE(names.name(2, EntityNames::FACE, 256), 0u);
    EXPECT_EQ(names.name(0, EntityNames::FACE, 0), 0u) << "an assembly has no faces";
    // Nothing resolves from the cleared buffer or an unassigned number; parts and PMI lines
    // carry their node and primitive id.
    EXPECT_FALSE(names.resolve(0).valid());
    EXPECT_FALSE(names.resolve((EntityNames::FACE << EntityNames::KIND_SHIFT) | 5).valid());
    EXPECT_EQ(names.resolve(EntityNames::part(3)).node, 3);
    EXPECT_FALSE(names.resolve(EntityNames::part(4)).valid());
    EXPECT_EQ(names.resolve(EntityNames::edgeLike(77)).index, 77);

    // 2^28 numbers a kind: a part with 2^27 faces fits once, not twice.
    EntityNames full;
    const unsigned half = 1u << 27;
    EXPECT_FALSE(full.assign({{0, 0, 0, 0, half}, {0, 0, 0, 0, half}, {0, 0, 0, 0, 10}}));
    EXPECT_EQ(full.resolve(full.name(0, EntityNames::FACE, 5)).index, 5);
    EXPECT_EQ(full.name(1, EntityNames::FACE, 0), 0u);
    EXPECT_EQ(full.resolve(full.name(2, EntityNames::FACE, 9)).node, 2);
}

TEST(EntityNamesTest, TheTopologyNamesWhatItsNodesPlace) {
    SCSceneTopo topology;
    SCSceneTopo::Part part;
    part.entities.faces.resize(2);
    part.entities.vertices.resize(1);
    topology.parts.push_back(part);
    topology.nodes.resize(3);
    topology.nodes[1].part = 0;
    topology.nodes[1].meshIds = {10, 11};
    topology.nodes[2].part = 0;
    topology.nodes[2].pointIds = {12};
    topology.index();
    ASSERT_NE(topology.owner(11), nullptr);
    EXPECT_EQ(topology.owner(11)->node, 1);
    EXPECT_EQ(topology.owner(11)->slot, 1);
    EXPECT_EQ(topology.owner(12)->node, 2);
    EXPECT_EQ(topology.owner(13), nullptr);
    EXPECT_EQ(topology.resolve(topology.name(2, EntityNames::FACE, 1)).node, 2);
    EXPECT_EQ(topology.name(2, EntityNames::EDGE, 0), 0u);
    // A copy names alike.
    auto copy = std::static_pointer_cast<SCSceneTopo>(topology.clone());
    EXPECT_EQ(copy->name(1, EntityNames::POINT, 0), topology.name(1, EntityNames::POINT, 0));
}

} // namespace
} // namespace qrnsg
