#include "ZelUtil/TarvexDib.h"

#include "image/Resize.h"

#include <algorithm>
#include <cstring>

namespace
{

constexpr int kOnlyColumn = 0;

} // namespace

void CTarvexDib::SetupInterpolMethod(CTarvexDib::InterpolMethod method)
{
    m_interpolMethod = BitCount() < 24 ? InterpolNearest : method;
    switch (m_interpolMethod)
    {
    case InterpolNearest:
        m_sampler = &CTarvexDib::NearestNeighbour;
        break;
    case InterpolBiLinear:
        m_sampler = BitCount() == 24 ? &CTarvexDib::BiLinearTriple : &CTarvexDib::BiLinearQuad;
        break;
    case InterpolCubic:
        m_sampler = BitCount() == 24 ? &CTarvexDib::CubicTriple : &CTarvexDib::CubicQuad;
        break;
    }
}

bool CTarvexDib::Resize(CTarvexDib& source) const
{
    if (&source == this || source.BitCount() < 24 || BitCount() < 24)
        return false;
    const bool nothingToFill = m_width == 0 || m_height == 0;
    if (!nothingToFill && (source.m_width == 0 || source.m_height == 0))
        return false;

    source.SetupInterpolMethod(m_interpolMethod);
    if (nothingToFill)
        return true;

    const Sampler sampler = source.m_sampler;

    // After an unknown method the source may still have the sampler that was chosen for an earlier depth, so
    // the source's depth counts too.
    const bool isTriple = sampler == &CTarvexDib::BiLinearTriple || sampler == &CTarvexDib::CubicTriple;
    const int channels = isTriple ? 3 : std::min(m_pixelSize, source.m_pixelSize);

    const zel::ResizeJob job = {*this, source, channels, static_cast<double>(source.m_width) / m_width,
                                static_cast<double>(source.m_height) / m_height};

    if (sampler == &CTarvexDib::NearestNeighbour)
        zel::ResizeNearest(job);
    else if (sampler == &CTarvexDib::BiLinearTriple || sampler == &CTarvexDib::BiLinearQuad)
        zel::ResizeLinear(job);
    else if (sampler == &CTarvexDib::CubicTriple || sampler == &CTarvexDib::CubicQuad)
        zel::ResizeCubic(job);
    else
        ResizeBySampler(source, job.stepX, job.stepY, channels);
    return true;
}

void CTarvexDib::NearestNeighbour(double x, double y, unsigned char* out) const
{
    const unsigned char* row = GetPixelFast(0, zel::NearestOffset(y, m_height, 1));
    std::memcpy(out, row + zel::NearestOffset(x, m_width, m_pixelSize),
                static_cast<std::size_t>(m_pixelSize));
}

void CTarvexDib::BiLinearTriple(double x, double y, unsigned char* out) const
{
    SampleLinear(x, y, out, 3);
}

void CTarvexDib::BiLinearQuad(double x, double y, unsigned char* out) const
{
    SampleLinear(x, y, out, 4);
}

void CTarvexDib::CubicTriple(double x, double y, unsigned char* out) const
{
    SampleCubic(x, y, out, 3);
}

void CTarvexDib::CubicQuad(double x, double y, unsigned char* out) const
{
    SampleCubic(x, y, out, 4);
}

// Resize by a sampler that has no path of its own: that of a derived class.
void CTarvexDib::ResizeBySampler(const CTarvexDib& source, double stepX, double stepY, int channels) const
{
    double y = 0.0;
    for (int row = 0; row < m_height; ++row, y += stepY)
    {
        unsigned char* to = GetPixelFast(0, row);
        for (int i = 0; i < m_width; ++i, to += m_pixelSize)
        {
            unsigned char pixel[4];
            (source.*source.m_sampler)(i * stepX, y, pixel);
            std::memcpy(to, pixel, static_cast<std::size_t>(channels));
        }
    }
}

void CTarvexDib::SampleLinear(double x, double y, unsigned char* out, int channels) const
{
    const zel::LinearTaps column = zel::MakeLinearTaps(x, m_width, m_pixelSize);
    zel::LinearPixels(
        zel::MakeDefinedRow(out, channels, channels, *this, zel::MakeLinearTaps(y, m_height, 1), &column, 0),
        &kOnlyColumn, 1);
}

void CTarvexDib::SampleCubic(double x, double y, unsigned char* out, int channels) const
{
    const zel::CubicTaps column = zel::MakeCubicTaps(x, m_width, m_pixelSize);
    zel::CubicPixels(
        zel::MakeDefinedRow(out, channels, channels, *this, zel::MakeCubicTaps(y, m_height, 1), &column, 0),
        &kOnlyColumn, 1);
}
