#pragma once

#include "ZelUtil/Errors.h"
#include "ZelUtil/Export.h"

#include <cstddef>
#include <cstdint>

#include <memory>
#include <new>

/// A point of a plane.
struct REALPOINT
{
    double x;
    double y;
};

/// Pairs of points that a polynomial is fitted to: source[k] is to map to target[k].
struct ControlPoints
{
    REALPOINT source[20];
    REALPOINT target[20];
    int count; ///< pairs in use, from index 0 on, at most 20
};

/// A fitted polynomial. The first 3, 6 or 10 entries of each array mean something, for order 1, 2 or 3. The
/// terms, by index: 1, x, y, x^2, x*y, y^2, x^3, x^2*y, x*y^2, y^3.
struct PolyCoefficients
{
    int order;
    double xCoeff[10]; ///< of the result's x
    double yCoeff[10]; ///< of the result's y
};

/// A dense matrix of doubles, not initialised. The elements are on the heap: std::bad_alloc where memory runs
/// out.
class CMatrix
{
public:
    CMatrix(int rowCount, int colCount)
        : data(new double[ElementCount(rowCount, colCount)]), rows(rowCount), cols(colCount)
    {
    }
    CMatrix(const CMatrix&) = delete;
    CMatrix& operator=(const CMatrix&) = delete;

    /// Throws BasicError ("CMatrix::operator()", "Index out of bounds") outside 0 to rows - 1, 0 to cols - 1.
    double& operator()(int r, int c)
    {
        if (r < 0 || r >= rows || c < 0 || c >= cols)
            throw BasicError("CMatrix::operator()", "Index out of bounds", __FILE__, __LINE__);
        return data[static_cast<std::size_t>(r) * static_cast<std::size_t>(cols) +
                    static_cast<std::size_t>(c)];
    }

private:
    static std::size_t ElementCount(int rowCount, int colCount)
    {
        const std::uint64_t count = rowCount > 0 && colCount > 0 ? static_cast<std::uint64_t>(rowCount) *
                                                                       static_cast<std::uint64_t>(colCount)
                                                                 : 0;
        if (count > SIZE_MAX / sizeof(double))
            throw std::bad_array_new_length();
        return static_cast<std::size_t>(count);
    }

    std::unique_ptr<double[]> data; ///< row by row
    int rows;
    int cols;
};

/// The normal equations of one fit: one n x n matrix, two right-hand sides.
class CPolyArguments
{
public:
    /// Throws MemoryError ("CPolyArguments::CPolyArguments", "Out of memory"); nothing is left allocated
    /// then.
    explicit CPolyArguments(int n) : size(n)
    {
        try
        {
            matrix = std::make_unique<CMatrix>(n, n);
            rhsX.reset(new double[static_cast<std::size_t>(n)]);
            rhsY.reset(new double[static_cast<std::size_t>(n)]);
        }
        catch (const std::bad_alloc&)
        {
            throw MemoryError("CPolyArguments::CPolyArguments", "Out of memory", __FILE__, __LINE__);
        }
    }
    CPolyArguments(const CPolyArguments&) = delete;
    CPolyArguments& operator=(const CPolyArguments&) = delete;

    std::unique_ptr<CMatrix> matrix;
    std::unique_ptr<double[]> rhsX; ///< for the coefficients of x
    std::unique_ptr<double[]> rhsY; ///< for the coefficients of y
    int size;
};

/// Maps points of one plane to another by a polynomial of order 1, 2 or 3 in x and y, fitted to control
/// points by least squares.
///
/// The fit solves the normal equations by Gauss-Jordan elimination with partial pivoting, in doubles, each
/// rounded once per operation: results are the same on every build. Coordinates of large magnitude lose
/// digits there; shift and scale them towards -1 to 1 before an order 3 fit.
///
/// A plain value: copies take the state as it is. One caller uses it at a time.
class ZELUTIL_API CPolyApprox
{
public:
    /// Unset: maps each point to itself.
    CPolyApprox();

    /// Fits a polynomial of this order, which needs 4, 8 or 12 pairs for order 1, 2 or 3, and at most 20.
    /// False with the object unchanged: another order, another count. False with the object unset: the points
    /// do not determine a polynomial (an exact zero among the pivots; there is no tolerance). Throws
    /// MemoryError (or std::bad_alloc where there is none left for its texts either) with the object unset.
    /// Points on a slanting line may pass, as rounding hides the zero, and coordinates that are not finite or
    /// overflow give coefficients that are not numbers: look at what is left of the points. GetOrder and the
    /// coefficients change with a successful fit only.
    bool SetupPolynom(const ControlPoints& points, int order);

    /// Maps a point: the sums of coefficient * term over the terms in index order, from 0.0 on. Powers are
    /// x * x, (x * x) * x and alike, mixed terms (x * x) * y and x * (y * y). Allocates nothing.
    REALPOINT Approx(const REALPOINT& p) const;

    /// The order of the last successful fit; 0 before the first.
    int GetOrder() const;

    /// The polynomial of the last successful fit; all zero before the first.
    const PolyCoefficients& GetCoefficients() const;

private:
    using Evaluator = REALPOINT (CPolyApprox::*)(const REALPOINT&) const;

    REALPOINT Approx1st(const REALPOINT& p) const;
    REALPOINT Approx2nd(const REALPOINT& p) const;
    REALPOINT Approx3rd(const REALPOINT& p) const;
    double Term(int i, double x, double y) const;
    bool CalcCoefficients(const ControlPoints& points, int order);
    void CalcLeastSquares(const ControlPoints& points, CPolyArguments* arguments) const;
    bool SolveMatrix(CPolyArguments* arguments, PolyCoefficients* coefficients) const;

    Evaluator m_evaluator = nullptr; ///< none while the object is unset
    PolyCoefficients m_coefficients = {};
};
