#include "ZelUtil/PolyApprox.h"

#include <cmath>
#include <utility>

namespace
{

constexpr int kMaxPairs = static_cast<int>(sizeof(ControlPoints::source) / sizeof(REALPOINT));

// Coefficient times term, added to 0.0 in index order. The terms are scalars because an array of them would
// pass through memory for every point.

double Sum1st(const double (&c)[10], double x, double y)
{
    return 0.0 + c[0] + c[1] * x + c[2] * y;
}

double Sum2nd(const double (&c)[10], double x, double y, double xx, double xy, double yy)
{
    return Sum1st(c, x, y) + c[3] * xx + c[4] * xy + c[5] * yy;
}

double Sum3rd(const double (&c)[10], double x, double y, double xx, double xy, double yy)
{
    return Sum2nd(c, x, y, xx, xy, yy) + c[6] * (xx * x) + c[7] * (xx * y) + c[8] * (x * yy) +
           c[9] * (yy * y);
}

} // namespace

CPolyApprox::CPolyApprox() = default;

bool CPolyApprox::SetupPolynom(const ControlPoints& points, int order)
{
    constexpr Evaluator kEvaluators[] = {&CPolyApprox::Approx1st, &CPolyApprox::Approx2nd,
                                         &CPolyApprox::Approx3rd};
    if (order < 1 || order > 3 || points.count < 4 * order || points.count > kMaxPairs)
        return false;

    m_evaluator = nullptr;
    if (!CalcCoefficients(points, order))
        return false;
    m_evaluator = kEvaluators[order - 1];
    return true;
}

REALPOINT CPolyApprox::Approx(const REALPOINT& p) const
{
    return m_evaluator == nullptr ? p : (this->*m_evaluator)(p);
}

int CPolyApprox::GetOrder() const
{
    return m_coefficients.order;
}

const PolyCoefficients& CPolyApprox::GetCoefficients() const
{
    return m_coefficients;
}

REALPOINT CPolyApprox::Approx1st(const REALPOINT& p) const
{
    return {Sum1st(m_coefficients.xCoeff, p.x, p.y), Sum1st(m_coefficients.yCoeff, p.x, p.y)};
}

REALPOINT CPolyApprox::Approx2nd(const REALPOINT& p) const
{
    const double xx = p.x * p.x, xy = p.x * p.y, yy = p.y * p.y;
    return {Sum2nd(m_coefficients.xCoeff, p.x, p.y, xx, xy, yy),
            Sum2nd(m_coefficients.yCoeff, p.x, p.y, xx, xy, yy)};
}

REALPOINT CPolyApprox::Approx3rd(const REALPOINT& p) const
{
    const double xx = p.x * p.x, xy = p.x * p.y, yy = p.y * p.y;
    return {Sum3rd(m_coefficients.xCoeff, p.x, p.y, xx, xy, yy),
            Sum3rd(m_coefficients.yCoeff, p.x, p.y, xx, xy, yy)};
}

double CPolyApprox::Term(int i, double x, double y) const
{
    switch (i)
    {
    case 0:
        return 1.0;
    case 1:
        return x;
    case 2:
        return y;
    case 3:
        return x * x;
    case 4:
        return x * y;
    case 5:
        return y * y;
    case 6:
        return x * x * x;
    case 7:
        return x * x * y;
    case 8:
        return x * (y * y);
    case 9:
        return y * y * y;
    default:
        return 0.0;
    }
}

bool CPolyApprox::CalcCoefficients(const ControlPoints& points, int order)
{
    CPolyArguments arguments((order + 1) * (order + 2) / 2);
    PolyCoefficients coefficients = m_coefficients;
    coefficients.order = order;
    CalcLeastSquares(points, &arguments);
    if (!SolveMatrix(&arguments, &coefficients))
        return false;
    m_coefficients = coefficients;
    return true;
}

void CPolyApprox::CalcLeastSquares(const ControlPoints& points, CPolyArguments* arguments) const
{
    CMatrix& matrix = *arguments->matrix;
    double* const rhsX = arguments->rhsX.get();
    double* const rhsY = arguments->rhsY.get();
    const int n = arguments->size;
    for (int i = 0; i < n; ++i)
    {
        for (int j = i; j < n; ++j)
            matrix(i, j) = 0.0;
        rhsX[i] = 0.0;
        rhsY[i] = 0.0;
    }
    for (int k = 0; k < points.count; ++k)
    {
        const REALPOINT& source = points.source[k];
        const REALPOINT& target = points.target[k];
        for (int i = 0; i < n; ++i)
        {
            const double term = Term(i, source.x, source.y);
            for (int j = i; j < n; ++j)
                matrix(i, j) += Term(j, source.x, source.y) * term;
            rhsX[i] += term * target.x;
            rhsY[i] += term * target.y;
        }
    }
    for (int i = 1; i < n; ++i)
        for (int j = 0; j < i; ++j)
            matrix(i, j) = matrix(j, i);
}

bool CPolyApprox::SolveMatrix(CPolyArguments* arguments, PolyCoefficients* coefficients) const
{
    CMatrix& matrix = *arguments->matrix;
    double* const rhsX = arguments->rhsX.get();
    double* const rhsY = arguments->rhsY.get();
    const int n = arguments->size;
    for (int c = 0; c < n; ++c)
    {
        double pivot = matrix(c, c);
        int pivotRow = c;
        for (int r = c; r < n; ++r)
            if (std::fabs(matrix(r, c)) > std::fabs(pivot))
            {
                pivot = matrix(r, c);
                pivotRow = r;
            }
        if (pivot == 0.0)
            return false;

        if (pivotRow != c)
        {
            for (int j = 0; j < n; ++j)
                std::swap(matrix(c, j), matrix(pivotRow, j));
            std::swap(rhsX[c], rhsX[pivotRow]);
            std::swap(rhsY[c], rhsY[pivotRow]);
        }

        for (int r = 0; r < n; ++r)
        {
            if (r == c)
                continue;
            const double factor = matrix(r, c) / pivot;
            for (int j = c; j < n; ++j)
                matrix(r, j) -= factor * matrix(c, j);
            rhsX[r] -= factor * rhsX[c];
            rhsY[r] -= factor * rhsY[c];
        }
    }

    for (int i = 0; i < n; ++i)
    {
        coefficients->xCoeff[i] = rhsX[i] / matrix(i, i);
        coefficients->yCoeff[i] = rhsY[i] / matrix(i, i);
    }
    return true;
}
