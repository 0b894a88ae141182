#include "ZelUtil/ZelBox.h"

namespace
{

constexpr double kPi15 = 3.14159265358979;
constexpr double kHalfTurnsPerRadian = 1.0 / kPi15;
constexpr double kHalfTurnsPerDegree = 1.0 / 180.0;

double Extent(double lower, double upper)
{
    const double extent = upper - lower;
    return extent > 0.0 ? extent : -extent;
}

double Middle(double lower, double upper)
{
    return (upper + lower) * 0.5;
}

} // namespace

double degreeToRad(double degrees)
{
    return degrees * kPi15 * kHalfTurnsPerDegree;
}

double radToDegree(double radians)
{
    return radians * 180.0 * kHalfTurnsPerRadian;
}

ZelBox::ZelBox() : m_valid(false) {}

ZelBox::ZelBox(double x1, double y1, double x2, double y2) : m_min(x1, y1), m_max(x2, y2), m_valid(true) {}

ZelBox::ZelBox(double x1, double y1, double z1, double x2, double y2, double z2)
    : m_min(x1, y1, z1), m_max(x2, y2, z2), m_valid(true)
{
}

ZelBox::ZelBox(const BaseVector<double>& lower, const BaseVector<double>& upper)
    : m_min(lower), m_max(upper), m_valid(true)
{
}

ZelBox::ZelBox(const ZelBox& other) : m_min(other.m_min), m_max(other.m_max), m_valid(true) {}

ZelBox& ZelBox::operator=(const ZelBox& other) = default;

bool ZelBox::containsVector(const BaseVector<double>& v, bool ignoreDepth) const
{
    const bool inside = m_min.x < v.x && v.x < m_max.x && m_min.y < v.y && v.y < m_max.y;
    return inside && (ignoreDepth || (m_min.z < v.z && v.z < m_max.z));
}

double ZelBox::getWidth() const
{
    return Extent(m_min.x, m_max.x);
}

double ZelBox::getHeight() const
{
    return Extent(m_min.y, m_max.y);
}

double ZelBox::getDepth() const
{
    return Extent(m_min.z, m_max.z);
}

BaseVector<double> ZelBox::getBoxCenter() const
{
    return {Middle(m_min.x, m_max.x), Middle(m_min.y, m_max.y), Middle(m_min.z, m_max.z)};
}

void ZelBox::setZero()
{
    m_min = {};
    m_max = {};
}
