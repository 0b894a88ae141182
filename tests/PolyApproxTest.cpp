#include "ZelUtil/PolyApprox.h"

#include "Pictures.h"

#include <climits>

#include <gtest/gtest.h>

static_assert(!std::is_move_constructible_v<CMatrix> && !std::is_move_constructible_v<CPolyArguments>);

static ControlPoints RandomPoints(int count)
{
    ControlPoints points = {{}, {}, count};
    for (double* const numbers : {&points.source[0].x, &points.target[0].x})
        std::generate_n(numbers, 40,
                        [] { return std::uniform_real_distribution<double>(-1.0, 1.0)(test::Random()); });
    return points;
}

// Only the fit of least squares leaves residuals that are orthogonal to every term.
TEST(PolyApprox, ResidualsAreOrthogonalToEveryTerm)
{
    for (int round = 0; round < 600; ++round)
    {
        const int order = 1 + round % 3, termCount = (order + 1) * (order + 2) / 2;
        const ControlPoints points = RandomPoints(4 * order + round % (21 - 4 * order));
        CPolyApprox approx;
        ASSERT_TRUE(approx.SetupPolynom(points, order) && approx.GetOrder() == order);
        REALPOINT dots[10] = {};
        for (int k = 0; k < points.count; ++k)
        {
            const auto [x, y] = points.source[k];
            const double terms[] = {1,     x,         y,         x * x,       x * y,
                                    y * y, x * x * x, x * x * y, x * (y * y), y * y * y};
            REALPOINT sum = {};
            for (int i = 0; i < termCount; ++i)
            {
                sum.x += approx.GetCoefficients().xCoeff[i] * terms[i];
                sum.y += approx.GetCoefficients().yCoeff[i] * terms[i];
            }
            const REALPOINT mapped = approx.Approx(points.source[k]);
            ASSERT_TRUE(mapped.x == sum.x && mapped.y == sum.y); // added in this order, to the last digit
            for (int i = 0; i < termCount; ++i)
            {
                dots[i].x += (points.target[k].x - sum.x) * terms[i];
                dots[i].y += (points.target[k].y - sum.y) * terms[i];
            }
        }
        for (const REALPOINT& dot : dots)
            ASSERT_TRUE(std::fabs(dot.x) < 1e-10 && std::fabs(dot.y) < 1e-10);
    }
}

// The first mapping is 10 + 2 x - 1.5 y. The other figures come from another implementation of the
// elimination: the second case swaps rows for the largest magnitude, in the third two rows are equally good
// and the upper one stays, the fourth is of order 2.
TEST(PolyApprox, EveryBuildFindsTheSameDoubles)
{
    ControlPoints curved = {{}, {}, 12};
    for (int k = 0; k < 12; ++k)
    {
        curved.source[k] = {k % 4 * 0.7 - 1.0, k / 4 * 0.9 + k % 4 * k % 5 * 0.11 - 1.0};
        curved.target[k] = {k * k * 0.013 - 0.5, 1.0 / (k + 3)};
    }
    const std::pair<ControlPoints, std::vector<double>> cases[] = {
        {{{{0, 0}, {4, 0}, {0, 2}, {4, 2}}, {{10, 0}, {18, 0}, {7, 0}, {15, 0}}, 4}, {10, 2, -1.5}},
        {{{{0, -3}, {3, 3}, {-1, -2}, {-1, -3}}, {{3, 1}, {-2, -1}, {-1, -3}, {-2, -2}}, 4},
         {-3.507462686567165, 2.477611940298508, -1.91044776119403}},
        {{{{0, 2}, {1, 2}, {0, 1}, {3, -2}}, {{2, 3}, {2, 1}, {0, -2}, {1, 2}}, 4},
         {-0.4193548387096777, 1.0161290322580647, 0.8709677419354841}},
        {curved,
         {-0.06965665077539536, 0.11076005290915171, 0.62671909893242761, 0.031571174785195021,
          0.20798232012113982, 0.053022969813946462}}};
    for (const auto& [points, expected] : cases)
    {
        CPolyApprox approx;
        ASSERT_TRUE(approx.SetupPolynom(points, points.count / 4 > 1 ? 2 : 1));
        const double* const coefficients = approx.GetCoefficients().xCoeff;
        EXPECT_EQ(std::vector<double>(coefficients, coefficients + expected.size()), expected);
    }
}

TEST(PolyApprox, OnlySuccessChangesTheCoefficients)
{
    CPolyApprox approx;
    const auto maps = [&](double x) { return approx.Approx({0.25, 0.5}).x == x; };
    EXPECT_TRUE(approx.GetOrder() == 0 && maps(0.25));
    ControlPoints points = RandomPoints(8);
    ASSERT_TRUE(approx.SetupPolynom(points, 2));
    const CPolyApprox copy(approx);
    const double mapped = copy.Approx({0.25, 0.5}).x, first = copy.GetCoefficients().xCoeff[0];
    for (const auto& [order, count] : {std::pair(0, 20),
                                       {4, 20},
                                       {1, 3},
                                       {2, 7},
                                       {3, 11},
                                       {1, 21},
                                       {3, INT_MAX},
                                       {1, INT_MIN},
                                       {INT_MAX, 20},
                                       {INT_MIN, 20}})
    {
        points.count = count;
        EXPECT_FALSE(approx.SetupPolynom(points, order)) << order << ", " << count;
        EXPECT_TRUE(approx.GetOrder() == 2 && maps(mapped));
    }
    for (const double place : {0.0, 1.0})
    {
        std::fill(points.source, points.source + 20, REALPOINT{place, place});
        points.count = 4;
        EXPECT_FALSE(approx.SetupPolynom(points, 1)); // and the object is unset
        EXPECT_TRUE(maps(0.25) && approx.GetOrder() == 2 && approx.GetCoefficients().xCoeff[0] == first);
        approx = copy;
        EXPECT_TRUE(maps(mapped));
    }
    EXPECT_TRUE(
        approx.SetupPolynom({{{0, 0}, {1e-7, 0}, {0, 1e-7}, {1e-7, 1e-7}}, {}, 4}, 1)); // small pivots
}

TEST(PolyApprox, MatrixRefusesWhatLiesOutside)
{
    CMatrix matrix(2, 3);
    for (int i = 0; i < 6; ++i)
        matrix(i / 3, i % 3) = i;
    EXPECT_TRUE(matrix(0, 0) == 0 && matrix(0, 2) == 2 && matrix(1, 0) == 3 && matrix(1, 2) == 5);
    for (const auto& [r, c] : {std::pair(2, 0), {0, 3}, {-1, 0}, {0, -1}, {INT_MAX, INT_MAX}})
        try
        {
            matrix(r, c) = 1;
            ADD_FAILURE() << r << ", " << c;
        }
        catch (const BasicError& error)
        {
            EXPECT_EQ(error.getMethode() + ": " + error.getMsg(), "CMatrix::operator(): Index out of bounds");
            EXPECT_GE(error.getFile().Find("PolyApprox"), 0);
        }
    EXPECT_THROW(CMatrix(INT_MAX, INT_MAX), std::bad_alloc);
    EXPECT_THROW(CPolyArguments{INT_MAX}, MemoryError);
}
