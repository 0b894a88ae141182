#include "ZelUtil/ZelBox.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace
{

using Vector = BaseVector<double>;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// Other translation units may use the constants while they start.
const double g_turnsAtStart = PI + TWO_PI + HALF_PI;

} // namespace

TEST(ZelBox, ConstantsAndAngles)
{
    EXPECT_EQ(PI, 4.0 * std::atan(1.0));
    EXPECT_EQ(g_turnsAtStart, PI + TWO_PI + HALF_PI);
    EXPECT_EQ(TWO_PI, 8.0 * std::atan(1.0));
    EXPECT_EQ(HALF_PI, 2.0 * std::atan(1.0));
    EXPECT_EQ(SQRT_DBL_MAX, std::sqrt(std::numeric_limits<double>::max()));
    EXPECT_TRUE(std::isfinite(SQRT_DBL_MAX * SQRT_DBL_MAX));

    EXPECT_EQ(radToDegree(3.14159265358979), 180.00000000000003);
    EXPECT_EQ(radToDegree(1.0), 57.29577951308239);
    EXPECT_EQ(degreeToRad(180.0), 3.14159265358979);
    EXPECT_EQ(degreeToRad(-90.0), -3.14159265358979 / 2);
    int others = 0; // the order of the factors shows in some of these
    for (int i = 1; i < 500; ++i)
    {
        EXPECT_EQ(degreeToRad(i), (i * 3.14159265358979) * (1.0 / 180.0));
        EXPECT_EQ(radToDegree(i), (i * 180.0) * (1.0 / 3.14159265358979));
        others += degreeToRad(i) != i * (3.14159265358979 * (1.0 / 180.0));
    }
    EXPECT_GT(others, 50);
}

TEST(ZelBox, PointsOnAnEdgeAreOutside)
{
    const ZelBox flat(0, 0, 10, 10), deep(0, 0, -1, 10, 10, 1);
    const struct
    {
        Vector point;
        bool flat, deepIgnored, deep;
    } cases[] = {{{5, 5, 0}, true, true, true},
                 {{0, 5, 0}, false, false, false},
                 {{10, 5, 0}, false, false, false},
                 {{5, 0, 0}, false, false, false},
                 {{5, 10, 0}, false, false, false},
                 {{5, 5, 1}, true, true, false},
                 {{5, 5, -1}, true, true, false},
                 {{5, 5, kNan}, true, true, false},
                 {{kNan, 5, 0}, false, false, false},
                 {{5, kNan, 0}, false, false, false},
                 {{9.999, 0.001, 0.999}, true, true, true}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.point.x << ", " << c.point.y << ", " << c.point.z);
        EXPECT_EQ(flat.containsVector(c.point, true), c.flat);
        EXPECT_FALSE(flat.containsVector(c.point, false)); // no room between equal depths
        EXPECT_EQ(deep.containsVector(c.point, true), c.deepIgnored);
        EXPECT_EQ(deep.containsVector(c.point, false), c.deep);
    }
    EXPECT_FALSE(ZelBox(10, 10, 0, 0).containsVector({5, 5}, true));
    for (const bool ignoreDepth : {true, false})
        EXPECT_FALSE(ZelBox().containsVector({}, ignoreDepth));
    ZelBox invalid(deep);
    invalid.setValid(false); // which does not count
    EXPECT_TRUE(invalid.containsVector({5, 5, 0}, false));
}

TEST(ZelBox, ExtentsAndCentre)
{
    const ZelBox box(Vector(10, 0, 30), Vector(0, 20, 0));
    EXPECT_EQ(box.getWidth(), 10);
    EXPECT_EQ(box.getHeight(), 20);
    EXPECT_EQ(box.getDepth(), 30);
    const Vector centre = box.getBoxCenter();
    EXPECT_TRUE(centre.x == 5 && centre.y == 10 && centre.z == 15);
    EXPECT_TRUE(std::signbit(ZelBox(3, 3, 3, 3).getWidth()));
    EXPECT_EQ(ZelBox(1, 2, 3, 4).getDepth(), 0);
}

namespace
{

void ExpectBox(const ZelBox& box, const Vector& lower, const Vector& upper, bool valid)
{
    EXPECT_TRUE(box.m_min.x == lower.x && box.m_min.y == lower.y && box.m_min.z == lower.z);
    EXPECT_TRUE(box.m_max.x == upper.x && box.m_max.y == upper.y && box.m_max.z == upper.z);
    EXPECT_EQ(box.isValid(), valid);
}

} // namespace

TEST(ZelBox, CopiesBecomeValidAssignmentsDoNot)
{
    ExpectBox(ZelBox(), {}, {}, false);
    ExpectBox(ZelBox(1, 2, 3, 4), {1, 2, 0}, {3, 4, 0}, true);
    ExpectBox(ZelBox({1, 2}, {3, 4, 5}), {1, 2, 0}, {3, 4, 5}, true);
    ZelBox invalid(1, 2, 3, 4, 5, 6);
    ExpectBox(invalid, {1, 2, 3}, {4, 5, 6}, true);
    invalid.setValid(false);
    ExpectBox(ZelBox(invalid), {1, 2, 3}, {4, 5, 6}, true);
    ZelBox assigned(7, 8, 9, 10);
    assigned = invalid;
    ExpectBox(assigned, {1, 2, 3}, {4, 5, 6}, false);
    assigned.setZero();
    ExpectBox(assigned, {}, {}, false);
    assigned.setValid(true);
    assigned.setZero();
    ExpectBox(assigned, {}, {}, true);
}
