#include "qrnsg/SCView.h"
#include "qrnmath/MatrixUtils.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace qrnsg;
using qrnmath::Mat4;
using qrnmath::Vec3;

namespace {

// Rows of the world-to-view rotation: right, up, and backwards (towards the eye).
Vec3 row(const Mat4& m, int i) {
    return Vec3(m[i], m[4 + i], m[8 + i]);
}

} // namespace

TEST(SCView, StandardOrientationsOfAZUpModel) {
    struct Expect {
        SCView::ORIENTATION orientation;
        Vec3 direction; // the way the view looks
        Vec3 up;        // what shows upwards
    };
    const float s = 1.0f / std::sqrt(3.0f);
    const Expect cases[] = {
        {SCView::FRONT, Vec3(0, 1, 0), Vec3(0, 0, 1)},
        {SCView::BACK, Vec3(0, -1, 0), Vec3(0, 0, 1)},
        {SCView::LEFT, Vec3(1, 0, 0), Vec3(0, 0, 1)},
        {SCView::RIGHT, Vec3(-1, 0, 0), Vec3(0, 0, 1)},
        {SCView::TOP, Vec3(0, 0, -1), Vec3(0, 1, 0)},
        {SCView::BOTTOM, Vec3(0, 0, 1), Vec3(0, -1, 0)},
        {SCView::ISOMETRIC, Vec3(-s, s, -s), Vec3()},
        {SCView::ISOMETRIC_FRONT_LEFT, Vec3(s, s, -s), Vec3()},
        {SCView::ISOMETRIC_BACK_RIGHT, Vec3(-s, -s, -s), Vec3()},
        {SCView::ISOMETRIC_BACK_LEFT, Vec3(s, -s, -s), Vec3()},
    };
    const SCView views;
    for (const Expect& e : cases) {
        SCOPED_TRACE(e.orientation);
        const Mat4 m = views.rotation(e.orientation);
        EXPECT_EQ(m, SCView::standardRotation(e.orientation));
        EXPECT_TRUE(qrnmath::nearlyEqual(-row(m, 2), e.direction, 1e-6f));
        if (e.up.lengthSquared() > 0.0f)
            EXPECT_TRUE(qrnmath::nearlyEqual(row(m, 1), e.up, 1e-6f));
        else
            EXPECT_GT(row(m, 1)[2], 0.8f) << "isometric views keep Z upwards";
        // A proper rotation: orthonormal rows, right-handed, no translation.
        EXPECT_NEAR(qrnmath::cross(row(m, 0), row(m, 1)).dot(row(m, 2)), 1.0f, 1e-6f);
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(row(m, i).length(), 1.0f, 1e-6f);
        EXPECT_EQ(m[12], 0.0f);
        EXPECT_EQ(m[15], 1.0f);
    }
    // Front: the model's X to the right.
    EXPECT_TRUE(qrnmath::nearlyEqual(row(views.rotation(SCView::FRONT), 0), Vec3(1, 0, 0), 1e-6f));
    EXPECT_EQ(views.rotation(SCView::ORIENTATION_COUNT), qrnmath::MatrixUtils::identity());
}

TEST(SCView, OrientationsAreDocumentDataThatClearRestores) {
    SCView views;
    views.orientations[SCView::TOP] = qrnmath::MatrixUtils::identity();
    views.views.push_back(SCView::View());
    auto copy = std::dynamic_pointer_cast<SCView>(views.clone());
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->rotation(SCView::TOP), qrnmath::MatrixUtils::identity());
    views.clear();
    EXPECT_TRUE(views.views.empty());
    EXPECT_EQ(views.rotation(SCView::TOP), SCView::standardRotation(SCView::TOP));
    EXPECT_EQ(copy->views.size(), 1u);
}
