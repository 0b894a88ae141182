#include "ZelUtil/PolyApprox.h"

#include "Pictures.h"

#include <climits>
#include <numeric>

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
        const auto& [sameOrder, xCoeff, yCoeff] = approx.GetCoefficients();
        double dots[20] = {};
        for (int k = 0; k < points.count; ++k)
        {
            const auto [x, y] = points.source[k];
            const double terms[] = {1,     x,         y,         x * x,       x * y,
                                    y * y, x * x * x, x * x * y, x * (y * y), y * y * y};
            const REALPOINT mapped =
                approx.Approx(points.source[k]); // added in this order, to the last digit
            ASSERT_EQ(mapped.x, std::inner_product(terms, terms + termCount, xCoeff, 0.0));
            ASSERT_EQ(mapped.y, std::inner_product(terms, terms + termCount, yCoeff, 0.0));
            const double residuals[] = {points.target[k].x - mapped.x, points.target[k].y - mapped.y};
            for (int i = 0; i < 2 * termCount; ++i)
                dots[i] += residuals[i % 2] * terms[i / 2];
        }
        for (const double dot : dots)
            ASSERT_LT(std::fabs(dot), 1e-10);
    }
}

// The figures were computed independently, in doubles, with the same order of operations. The first case
// swaps rows for the largest magnitude; in the second two rows are equally good and the upper one stays.
TEST(PolyApprox, EveryBuildFindsTheSameDoubles)
{
    const std::pair<ControlPoints, std::vector<double>> cases[] = {
        {{{{0, -3.3}, {3.3, 3.3}, {-1.1, -2.2}, {-1.1, -3.3}},
          {{0.3, 0}, {-0.2, 0}, {-0.1, 0}, {-0.2, 0}},
          4},
         {-0.3507462686567156, 0.22523744911804536, -0.17367706919945677}},
        {{{{0.7, 2.1}, {1.3, 1.9}, {-0.4, 0.8}, {2.4, -2.3}}, {{0.2, 0}, {0.3, 0}, {-0.1, 0}, {0.1, 0}}, 4},
         {-0.10572326293600615, 0.17363480889313138, 0.09134152646859965}}};
    for (const auto& [points, expected] : cases)
    {
        CPolyApprox approx;
        ASSERT_TRUE(approx.SetupPolynom(points, 1));
        const double* const coefficients = approx.GetCoefficients().xCoeff;
        EXPECT_EQ(std::vector<double>(coefficients, coefficients + 3), expected);
    }
}

TEST(PolyApprox, OnlySuccessChangesTheCoefficients)
{
    CPolyApprox approx;
    const auto maps = [&](double x) { return approx.Approx({0.25, 0.5}).x == x; };
    EXPECT_TRUE(approx.GetOrder() == 0 && maps(0.25));
    ControlPoints points = RandomPoints(8);
    ASSERT_TRUE(approx.SetupPolynom(points, 2));
    const double mapped = approx.Approx({0.25, 0.5}).x, first = approx.GetCoefficients().xCoeff[0];
    const int refused[][2] = {{0, 20}, {4, 20},      {1, 3},       {2, 7},        {3, 11},
                              {1, 21}, {3, INT_MAX}, {1, INT_MIN}, {INT_MAX, 20}, {INT_MIN, 20}};
    for (const auto& [order, count] : refused)
    {
        points.count = count;
        EXPECT_FALSE(approx.SetupPolynom(points, order)) << order << ", " << count;
        EXPECT_TRUE(approx.GetOrder() == 2 && maps(mapped));
    }
    EXPECT_FALSE(approx.SetupPolynom({{}, {}, 4}, 1)); // and the object is unset
    EXPECT_TRUE(maps(0.25) && approx.GetOrder() == 2 && approx.GetCoefficients().xCoeff[0] == first);
    // Small pivots are as good as others.
    EXPECT_TRUE(approx.SetupPolynom({{{0, 0}, {1e-7, 0}, {0, 1e-7}, {1e-7, 1e-7}}, {}, 4}, 1));
}

TEST(PolyApprox, MatrixRefusesWhatLiesOutside)
{
    CMatrix matrix(2, 3);
    for (int i = 0; i < 6; ++i)
        matrix(i / 3, i % 3) = i;
    EXPECT_TRUE(matrix(0, 2) == 2 && matrix(1, 0) == 3);
    for (const auto& [r, c] : {std::pair(2, 0), {0, 3}, {-1, 0}, {0, -1}})
        EXPECT_THROW(matrix(r, c) = 1, BasicError);
    EXPECT_THROW(CMatrix(INT_MAX, INT_MAX), std::bad_alloc);
    EXPECT_THROW(CPolyArguments{INT_MAX}, MemoryError);
}
