#include "ZelUtil/PolyApprox.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>
#include <random>
#include <type_traits>

static_assert(!std::is_move_constructible_v<CMatrix> && !std::is_move_constructible_v<CPolyArguments>);

namespace
{

constexpr int kTerms[] = {0, 3, 6, 10};
constexpr int kPairs[] = {0, 4, 8, 12};

// By powers, as a check of the order of the terms: x^i * y^j.
double TermByPowers(int index, double x, double y)
{
    constexpr int powers[10][2] = {{0, 0}, {1, 0}, {0, 1}, {2, 0}, {1, 1},
                                   {0, 2}, {3, 0}, {2, 1}, {1, 2}, {0, 3}};
    return std::pow(x, powers[index][0]) * std::pow(y, powers[index][1]);
}

std::mt19937& Random()
{
    static std::mt19937 random(6);
    return random;
}

double RandomNumber()
{
    return std::uniform_real_distribution<double>(-1.0, 1.0)(Random());
}

ControlPoints RandomPoints(int count)
{
    ControlPoints points = {};
    points.count = count;
    for (int k = 0; k < 20; ++k)
    {
        points.source[k] = {RandomNumber(), RandomNumber()};
        points.target[k] = {RandomNumber(), RandomNumber()};
    }
    return points;
}

struct Solution
{
    long double coeff[10];
    long double smallestPivot; // how well the points determine it
};

// The least squares solution for one coordinate by Householder reflections in long double: no normal
// equations.
Solution SolveByReflections(const ControlPoints& points, int order, double REALPOINT::*coordinate)
{
    const int n = kTerms[order], m = points.count;
    long double a[20][11]; // one row a pair, right-hand side last
    for (int k = 0; k < m; ++k)
    {
        for (int i = 0; i < n; ++i)
            a[k][i] = TermByPowers(i, points.source[k].x, points.source[k].y);
        a[k][n] = points.target[k].*coordinate;
    }
    Solution solution = {{}, 1};
    for (int c = 0; c < n; ++c)
    {
        long double norm = 0, length = 0, v[20];
        for (int r = c; r < m; ++r)
            norm += a[r][c] * a[r][c];
        norm = std::copysign(std::sqrt(norm), -a[c][c]);
        solution.smallestPivot = std::min(solution.smallestPivot, std::fabs(norm));
        for (int r = c; r < m; ++r)
        {
            v[r] = a[r][c] - (r == c ? norm : 0);
            length += v[r] * v[r];
        }
        for (int j = c; j <= n; ++j)
        {
            long double dot = 0;
            for (int r = c; r < m; ++r)
                dot += v[r] * a[r][j];
            for (int r = c; r < m; ++r)
                a[r][j] -= 2 * dot / length * v[r];
        }
    }
    for (int i = n - 1; i >= 0; --i)
    {
        long double rest = a[i][n];
        for (int j = i + 1; j < n; ++j)
            rest -= a[i][j] * solution.coeff[j];
        solution.coeff[i] = rest / a[i][i];
    }
    return solution;
}

} // namespace

TEST(PolyApprox, AffineMappingWorkedOutByHand)
{
    ControlPoints points = {{{0, 0}, {4, 0}, {0, 2}, {4, 2}}, {{10, 20}, {18, 24}, {7, 26}, {15, 30}}, 4};
    CPolyApprox approx; // x' = 10 + 2x - 1.5y, y' = 20 + x + 3y
    ASSERT_TRUE(approx.SetupPolynom(points, 1));
    const double xCoeff[] = {10, 2, -1.5}, yCoeff[] = {20, 1, 3};
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_NEAR(approx.GetCoefficients().xCoeff[i], xCoeff[i], 1e-13);
        EXPECT_NEAR(approx.GetCoefficients().yCoeff[i], yCoeff[i], 1e-13);
    }
    const REALPOINT mapped = approx.Approx({100, -10});
    EXPECT_NEAR(mapped.x, 225, 1e-12);
    EXPECT_NEAR(mapped.y, 90, 1e-12);
}

TEST(PolyApprox, AgreesWithAnIndependentSolution)
{
    int compared = 0;
    for (int round = 0; round < 600; ++round)
    {
        const int order = 1 + round % 3;
        const ControlPoints points =
            RandomPoints(std::uniform_int_distribution<int>(kPairs[order], 20)(Random()));
        const Solution x = SolveByReflections(points, order, &REALPOINT::x);
        const Solution y = SolveByReflections(points, order, &REALPOINT::y);
        if (x.smallestPivot < 0.1L) // normal equations square what such points lose
            continue;
        ++compared;
        CPolyApprox approx;
        ASSERT_TRUE(approx.SetupPolynom(points, order));
        EXPECT_EQ(approx.GetOrder(), order);
        for (int i = 0; i < kTerms[order]; ++i)
        {
            EXPECT_NEAR(approx.GetCoefficients().xCoeff[i], static_cast<double>(x.coeff[i]), 1e-10) << round;
            EXPECT_NEAR(approx.GetCoefficients().yCoeff[i], static_cast<double>(y.coeff[i]), 1e-10) << round;
        }
    }
    EXPECT_GT(compared, 300);
}

TEST(PolyApprox, EvaluatesInIndexOrder)
{
    for (int order = 1; order <= 3; ++order)
    {
        CPolyApprox approx;
        ASSERT_TRUE(approx.SetupPolynom(RandomPoints(20), order));
        for (int round = 0; round < 1000; ++round)
        {
            const double x = RandomNumber() * 9, y = RandomNumber() * 9;
            const double terms[] = {1,     x,         y,         x * x,       x * y,
                                    y * y, x * x * x, x * x * y, x * (y * y), y * y * y};
            double sumX = 0.0, sumY = 0.0;
            for (int i = 0; i < kTerms[order]; ++i)
            {
                sumX += approx.GetCoefficients().xCoeff[i] * terms[i];
                sumY += approx.GetCoefficients().yCoeff[i] * terms[i];
            }
            EXPECT_EQ(approx.Approx({x, y}).x, sumX);
            EXPECT_EQ(approx.Approx({x, y}).y, sumY);
        }
    }
}

// What one fit gives with arithmetic that rounds every operation to double; excess precision and contracted
// products change the last digits.
TEST(PolyApprox, EveryBuildFindsTheSameDoubles)
{
    ControlPoints points = {};
    points.count = 12;
    for (int k = 0; k < 12; ++k)
    {
        points.source[k] = {k % 4 * 0.7 - 1.0, k / 4 * 0.9 + k % 4 * k % 5 * 0.11 - 1.0};
        points.target[k] = {k * k * 0.013 - 0.5, 1.0 / (k + 3)};
    }
    CPolyApprox approx;
    ASSERT_TRUE(approx.SetupPolynom(points, 2));
    const double expected[] = {-0.06965665077539536,  0.11076005290915171,   0.62671909893242761,
                               0.031571174785195021,  0.20798232012113982,   0.053022969813946462,
                               0.1181368264407726,    -0.018893420982016282, -0.10428566042430619,
                               0.0030137031764352466, 0.012456712186516863,  0.061586314161840905};
    for (int i = 0; i < 6; ++i)
    {
        EXPECT_EQ(approx.GetCoefficients().xCoeff[i], expected[i]);
        EXPECT_EQ(approx.GetCoefficients().yCoeff[i], expected[6 + i]);
    }
}

// The figures come from another implementation of the elimination. The first needs its rows swapped, by
// magnitude; in the second two rows are equally good and the upper one stays.
TEST(PolyApprox, PivotsAreTheLargestAndTheFirst)
{
    const struct
    {
        ControlPoints points;
        double x[3], y[3];
    } cases[] = {{{{{0, -3}, {3, 3}, {-1, -2}, {-1, -3}}, {{3, 1}, {-2, -1}, {-1, -3}, {-2, -2}}, 4},
                  {-3.507462686567165, 2.477611940298508, -1.91044776119403},
                  {-3.828358208955225, 2.514925373134328, -1.5597014925373134}},
                 {{{{0, 2}, {1, 2}, {0, 1}, {3, -2}}, {{2, 3}, {2, 1}, {0, -2}, {1, 2}}, 4},
                  {-0.4193548387096777, 1.0161290322580647, 0.8709677419354841},
                  {-1.3548387096774195, 1.6290322580645165, 0.9677419354838712}}};
    for (const auto& c : cases)
    {
        CPolyApprox approx;
        ASSERT_TRUE(approx.SetupPolynom(c.points, 1));
        for (int i = 0; i < 3; ++i)
        {
            EXPECT_EQ(approx.GetCoefficients().xCoeff[i], c.x[i]) << i;
            EXPECT_EQ(approx.GetCoefficients().yCoeff[i], c.y[i]) << i;
        }
    }

    // Points that need it: by the largest signed number instead, coefficients are off by more than 1.
    ControlPoints points = {{{268, 684},
                             {331, 711},
                             {-669, -840},
                             {983, -519},
                             {-414, 954},
                             {469, -494},
                             {-650, -867},
                             {320, 797},
                             {-744, -646},
                             {-792, -905},
                             {845, -126},
                             {-631, 774}},
                            {},
                            12};
    for (int k = 0; k < points.count; ++k)
        for (int i = 0; i < 10; ++i)
            points.target[k].x += TermByPowers(i, points.source[k].x, points.source[k].y);
    CPolyApprox approx;
    ASSERT_TRUE(approx.SetupPolynom(points, 3));
    for (const double coefficient : approx.GetCoefficients().xCoeff)
        EXPECT_NEAR(coefficient, 1, 1e-3);

    // No pivot is too small.
    EXPECT_TRUE(approx.SetupPolynom({{{0, 0}, {1e-7, 0}, {0, 1e-7}, {1e-7, 1e-7}}, {}, 4}, 1));
}

TEST(PolyApprox, RefusalsKeepWhatWasThere)
{
    CPolyApprox approx;
    EXPECT_EQ(approx.GetOrder(), 0);
    EXPECT_EQ(approx.Approx({3, -7}).x, 3);
    EXPECT_EQ(approx.Approx({3, -7}).y, -7);
    ControlPoints points = RandomPoints(8);
    ASSERT_TRUE(approx.SetupPolynom(points, 2));
    const REALPOINT before = approx.Approx({0.3, 0.4});
    const struct
    {
        int order, count;
    } cases[] = {{0, 20},         {4, 20}, {-1, 20}, {1, 3},          {2, 7},
                 {3, 11},         {3, 5},  {1, 21},  {3, 2147483647}, {1, -2147483647 - 1},
                 {2147483647, 20}};
    for (const auto& c : cases)
    {
        points.count = c.count;
        EXPECT_FALSE(approx.SetupPolynom(points, c.order)) << c.order << ", " << c.count;
    }
    EXPECT_EQ(approx.GetOrder(), 2);
    EXPECT_EQ(approx.Approx({0.3, 0.4}).x, before.x);
    for (int order = 1; order <= 3; ++order)
    {
        points = RandomPoints(kPairs[order]);
        EXPECT_TRUE(approx.SetupPolynom(points, order));
    }
}

TEST(PolyApprox, PointsThatDetermineNothingUnsetTheObject)
{
    for (const double place : {0.0, 1.0})
    {
        CPolyApprox approx;
        ControlPoints points = RandomPoints(20);
        ASSERT_TRUE(approx.SetupPolynom(points, 2));
        const CPolyApprox copy(approx);
        const double first = approx.GetCoefficients().xCoeff[0];
        std::fill(points.source, points.source + 20, REALPOINT{place, place});
        points.count = 4;
        EXPECT_FALSE(approx.SetupPolynom(points, 1));
        EXPECT_EQ(approx.Approx({0.25, 0.5}).x, 0.25); // unset
        EXPECT_EQ(approx.GetOrder(), 2);
        EXPECT_EQ(approx.GetCoefficients().xCoeff[0], first);
        EXPECT_NE(copy.Approx({0.25, 0.5}).x, 0.25);
        approx = copy;
        EXPECT_EQ(approx.Approx({0.25, 0.5}).x, copy.Approx({0.25, 0.5}).x);
    }
}

TEST(PolyApprox, MatrixRefusesWhatLiesOutside)
{
    CMatrix matrix(2, 3);
    matrix(1, 2) = 7;
    matrix(1, 0) = 5;
    EXPECT_EQ(matrix(1, 2), 7);
    const int outside[][2] = {{2, 0}, {0, 3}, {-1, 0}, {0, -1}, {2147483647, 2147483647}};
    for (const auto& [r, c] : outside)
        try
        {
            matrix(r, c) = 1;
            ADD_FAILURE() << r << ", " << c;
        }
        catch (const BasicError& error)
        {
            EXPECT_EQ(error.getMethode(), "CMatrix::operator()");
            EXPECT_EQ(error.getMsg(), "Index out of bounds");
            EXPECT_GE(error.getFile().Find("PolyApprox"), 0);
            EXPECT_GT(error.getLine(), 0);
        }
    CMatrix none(0, 5);
    EXPECT_THROW(none(0, 0), BasicError);
    EXPECT_THROW(CMatrix(2147483647, 2147483647), std::bad_alloc);
}
