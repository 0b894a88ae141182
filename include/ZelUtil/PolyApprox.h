#pragma once

#include "ZelUtil/Errors.h"
#include "ZelUtil/Export.h"

#include <cstddef>
#include <cstdint>

#include <memory>
#include <new>

/// A point in a plane.
struct REALPOINT
{
    double x;
    double y;
};

/// The control points of a fit: source[k] should map to target[k].
struct ControlPoints
{
    REALPOINT source[20];
    REALPOINT target[20];
    int count; ///< number of pairs in use, at most 20
};

/// A fitted polynomial. Orders 1, 2 and 3 use the first 3, 6 and 10 coefficients of each array. The terms by
/// index: 1, x, y, x^2, x*y, y^2, x^3, x^2*y, x*y^2, y^3.
struct PolyCoefficients
{
    int order;
    double xCoeff[10]; ///< for the x of the result
    double yCoeff[10]; ///< for the y of the result
};

/// A dense matrix of doubles on the heap, not initialised. The constructor throws std::bad_alloc if memory
/// runs out.
class CMatrix
{
public:
    CMatrix(int rowCount, int colCount)
        : data(new double[ElementCount(rowCount, colCount)]), rows(rowCount), cols(colCount)
    {
    }
    CMatrix(const CMatrix&) = delete;
    CMatrix& operator=(const CMatrix&) = delete;

    /// Row `r`, column `c`, both counted from 0. Throws BasicError ("CMatrix::operator()", "Index out of
    /// bounds") if there is no such element.
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

/// The normal equations of one fit: an n x n matrix and two right-hand sides.
class CPolyArguments
{
public:
    /// Throws MemoryError ("CPolyArguments::CPolyArguments", "Out of memory"), with nothing left allocated,
    /// if memory runs out.
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
    std::unique_ptr<double[]> rhsX; ///< for xCoeff
    std::unique_ptr<double[]> rhsY; ///< for yCoeff
    int size;
};

/// Maps points from one plane to another by a polynomial of order 1, 2 or 3 in x and y, which is fitted to
/// control points by least squares.
///
/// The fit solves the normal equations by Gauss-Jordan elimination with partial pivoting. Every operation is
/// rounded to double, so all builds give the same result. Large coordinates lose digits: before a fit of
/// order 3, shift and scale them to about -1 to 1.
///
/// The object is a plain value: copies have the same state. It must not be used by two threads at once.
class ZELUTIL_API CPolyApprox
{
public:
    /// Unset: maps every point to itself.
    CPolyApprox();

    /// Fits a polynomial of the given order. Order 1 needs at least 4 pairs, order 2 needs 8 and order 3
    /// needs 12; the limit is 20. GetOrder and GetCoefficients change only if the fit succeeds.
    ///
    /// - Returns false, with the object unchanged, for any other order or number of pairs.
    /// - Returns false, with the object unset, if the points do not determine a polynomial, that is, if a
    ///   pivot is exactly zero. There is no tolerance.
    /// - Throws MemoryError, with the object unset, if memory runs out, or std::bad_alloc if there is no
    ///   memory for the texts of the error either.
    ///
    /// Success does not mean a good fit: rounding can hide the zero pivot of points on a slanting line, and
    /// coordinates that overflow or are not finite give NaN coefficients. Check how well the control points
    /// map.
    bool SetupPolynom(const ControlPoints& points, int order);

    /// Maps a point. Each coordinate is the sum of coefficient * term, added to 0.0 in the order of the
    /// terms' indices. Terms are multiplied from left to right, except for x * (y * y). Allocates nothing.
    REALPOINT Approx(const REALPOINT& p) const;

    /// Returns the order of the last successful fit, or 0 before the first.
    int GetOrder() const;

    /// Returns the polynomial of the last successful fit; all fields are 0 before the first.
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

    Evaluator m_evaluator = nullptr; ///< null while the object is unset
    PolyCoefficients m_coefficients = {};
};
