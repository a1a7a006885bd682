#include "qrnsgutils/ProfileUtils.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsg/VisibilityFunctor.h"
#include "qrnsgutils/ChildNodeFinder.h"

#include <gtest/gtest.h>

namespace {

using qrnmath::Vec3;
using qrnmath::Vec4;

// The box [0, 10] x [0, 6] x [0, 4] as twelve triangles.
qrnsg::Mesh box() {
    qrnsg::Mesh m;
    for (int i = 0; i < 8; ++i)
        m.vertices.push_back(Vec3((i & 1) ? 10.f : 0.f, (i & 2) ? 6.f : 0.f, (i & 4) ? 4.f : 0.f));
    const unsigned faces[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4},
                                  {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    for (const auto& f : faces)
        m.indices.insert(m.indices.end(), {f[0], f[1], f[2], f[0], f[2], f[3]});
    m.closed = true;
    return m;
}

float length(const std::vector<float>& v, const std::vector<int>& i) {
    float total = 0.0f;
    for (std::size_t k = 0; k + 1 < i.size(); k += 2) {
        const auto p = static_cast<std::size_t>(3 * i[k]),
                   q = static_cast<std::size_t>(3 * i[k + 1]);
        total += Vec3(v[p], v[p + 1], v[p + 2]).distance(Vec3(v[q], v[q + 1], v[q + 2]));
    }
    return total;
}

TEST(ProfileUtilsTest, APlaneCutsAPlacedBoxIntoItsOutline) {
    const std::vector<qrnsg::Mesh> meshes{box()};
    qrnsg::SCSceneRT rt;
    rt.meshes.add(7, 0, -1);
    qrnsg::SCSceneTopo topology;
    topology.nodes.resize(2);
    topology.nodes[1].parent = 0;
    topology.nodes[1].meshIds = {7};
    struct Row {
        Vec4 plane;
        const qrnmath::Mat4* placement;
        float length;       // of the outline; 0 for none
        std::size_t welded; // vertices: corners, and where face diagonals cross
    };
    const qrnmath::Mat4 moved = qrnmath::MatrixUtils::translation(Vec3(5, 0, 0));
    const Row rows[] = {
        {Vec4(0, 0, 1, -1.5f), nullptr, 32.0f, 8}, // across the middle: 10 x 6
        {Vec4(0, 0, 1, 0), nullptr, 32.0f, 4},     // through the bottom face: each edge once
        {Vec4(2, 0, 0, -6), nullptr, 20.0f, 8},    // x = 3, an unnormalised plane: 6 x 4
        {Vec4(1, 0, 0, -7), &moved, 20.0f, 8},     // x = 7 through the box moved by 5
        {Vec4(0, 0, 1, -5), nullptr, 0.0f, 0},     // above it
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "plane d " << row.plane[3]);
        if (row.placement) {
            rt.meshes.transforms.find(7)->first = *row.placement;
            *rt.meshes.flags.find(7) |= qrnsg::RTState::HAS_TRANSFORM;
        }
        qrnsgutils::ProfileUtils profile(meshes, rt, topology, 1e-4f, row.plane, nullptr);
        std::vector<float> v;
        std::vector<int> i;
        EXPECT_EQ(profile.intersect(1, v, i), row.length > 0.0f);
        EXPECT_NEAR(length(v, i), row.length, 1e-4f);
        EXPECT_EQ(v.size(), 3 * row.welded);
        qrnsg::BBox bound;
        profile.getProfileBound(bound);
        if (row.placement) {
            EXPECT_NEAR(bound.min()[0], 7.0f, 1e-4f) << "in world coordinates";
        }
    }
    // A hidden instance has no profile; nor has an unknown node.
    auto hidden = std::make_shared<qrnsg::VisibilityFunctor>();
    hidden->hide(7);
    std::vector<float> v;
    std::vector<int> i;
    EXPECT_FALSE(qrnsgutils::ProfileUtils(meshes, rt, topology, 1e-4f, Vec4(1, 0, 0, -7), hidden)
                     .intersect(1, v, i));
    EXPECT_FALSE(qrnsgutils::ProfileUtils(meshes, rt, topology, 1e-4f, Vec4(1, 0, 0, -7), nullptr)
                     .intersect(9, v, i));

    qrnsgutils::ChildNodeFinder finder(topology);
    EXPECT_EQ(finder.find(0), (std::vector<int>{0, 1}));
    EXPECT_EQ(finder.findWithMeshes(-1), (std::vector<int>{1}));
    EXPECT_TRUE(finder.find(5).empty());
}

} // namespace
