#pragma once

#include "ZelUtil/Export.h"

/// \name Constants
/// Constant-initialised: initialisers of other sources may use them.
/// @{
extern ZELUTIL_API const double PI;      ///< the double nearest to pi
extern ZELUTIL_API const double TWO_PI;  ///< PI + PI
extern ZELUTIL_API const double HALF_PI; ///< PI * 0.5
extern ZELUTIL_API const double
    SQRT_DBL_MAX; ///< the square root of the largest double, 1.3407807929942596e154; its square is finite
/// @}

/// Converts degrees to radians: degrees * 3.14159265358979 * (1.0 / 180.0), from left to right. Both
/// functions use this value of pi, of 15 digits, not PI.
ZELUTIL_API double degreeToRad(double degrees);

/// Converts radians to degrees: radians * 180.0 * (1.0 / 3.14159265358979), from left to right.
ZELUTIL_API double radToDegree(double radians);

/// A vector of three components, which are 0 by default.
template <typename T>
struct BaseVector
{
    T x = T();
    T y = T();
    T z = T();

    BaseVector() = default;
    BaseVector(T xValue, T yValue, T zValue = T()) : x(xValue), y(yValue), z(zValue) {}
};

/// An axis-parallel box in two or three dimensions, with a validity flag for the caller: no operation checks
/// it. Corners are stored as given, never sorted. No operation fails.
class ZELUTIL_API ZelBox
{
public:
    /// All coordinates are 0. The box is not valid.
    ZelBox();

    /// Valid boxes from a lower and an upper corner. Without z, it is 0 in both.
    ZelBox(double x1, double y1, double x2, double y2);
    ZelBox(double x1, double y1, double z1, double x2, double y2, double z2);
    ZelBox(const BaseVector<double>& lower, const BaseVector<double>& upper);

    /// Copies the corners. The copy is valid even if `other` is not.
    ZelBox(const ZelBox& other);

    /// Copies the corners and the flag.
    ZelBox& operator=(const ZelBox& other);

    bool isValid() const { return m_valid; }
    void setValid(bool valid) { m_valid = valid; }

    /// Whether `v` is strictly inside: in x and y, and in z unless `ignoreDepth`. Points on an edge are
    /// outside. If a lower coordinate is not less than the upper one, no point is inside, and a NaN never is.
    bool containsVector(const BaseVector<double>& v, bool ignoreDepth) const;

    /// The extents along x, y and z: the absolute difference of the corners, or -0.0 if they are equal.
    double getWidth() const;
    double getHeight() const;
    double getDepth() const;

    /// (upper + lower) * 0.5 on each axis.
    BaseVector<double> getBoxCenter() const;

    /// Sets all six coordinates to 0. The flag stays as it is.
    void setZero();

    BaseVector<double> m_min; ///< lower corner
    BaseVector<double> m_max; ///< upper corner
    bool m_valid;
};
