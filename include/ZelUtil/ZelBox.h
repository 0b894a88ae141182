#pragma once

#include "ZelUtil/Export.h"

/// \name Constants
/// Set before any other initialiser runs.
/// @{
extern ZELUTIL_API const double PI;      ///< the double nearest to pi
extern ZELUTIL_API const double TWO_PI;  ///< PI + PI
extern ZELUTIL_API const double HALF_PI; ///< PI * 0.5
extern ZELUTIL_API const double
    SQRT_DBL_MAX; ///< of the largest double, 1.3407807929942596e154; its square is finite
/// @}

/// Degrees to radians: degrees * 3.14159265358979 * (1.0 / 180.0), from left to right. This pi of 15 digits,
/// not PI.
ZELUTIL_API double degreeToRad(double degrees);

/// Radians to degrees: radians * 180.0 * (1.0 / 3.14159265358979), from left to right.
ZELUTIL_API double radToDegree(double radians);

/// Three components. A default vector, and one of two values, has z = 0.
template <typename T>
struct BaseVector
{
    T x = T();
    T y = T();
    T z = T();

    BaseVector() = default;
    BaseVector(T xValue, T yValue, T zValue = T()) : x(xValue), y(yValue), z(zValue) {}
};

/// An axis-parallel box in two or three dimensions, with a flag that says whether it means anything. The
/// corners are stored as they are given, never sorted, and no operation consults the flag. Nothing here
/// fails.
class ZELUTIL_API ZelBox
{
public:
    /// All zero, and not valid.
    ZelBox();

    /// Valid boxes, the first one with z = 0 in both corners.
    ZelBox(double x1, double y1, double x2, double y2);
    ZelBox(double x1, double y1, double z1, double x2, double y2, double z2);
    ZelBox(const BaseVector<double>& lower, const BaseVector<double>& upper);

    /// Copies the corners. The copy is valid, whatever `other` is.
    ZelBox(const ZelBox& other);

    /// Copies the corners and the flag.
    ZelBox& operator=(const ZelBox& other);

    bool isValid() const { return m_valid; }
    void setValid(bool valid) { m_valid = valid; }

    /// Whether `v` lies strictly inside, in x and y only where `ignoreDepth`. Points on an edge are outside,
    /// and so is everything where a lower coordinate is not below the upper one or is not a number.
    bool containsVector(const BaseVector<double>& v, bool ignoreDepth) const;

    /// Extents along x, y, z: never below zero, whichever corner is the larger. Equal coordinates give a
    /// negative zero.
    double getWidth() const;
    double getHeight() const;
    double getDepth() const;

    /// (upper + lower) * 0.5 on each axis.
    BaseVector<double> getBoxCenter() const;

    /// All six coordinates become 0; the flag stays.
    void setZero();

    BaseVector<double> m_min; ///< lower corner
    BaseVector<double> m_max; ///< upper corner
    bool m_valid;
};
