#include "ZelUtil/TarvexDib.h"

// The operations that change nothing but pixel bytes: resampling, blending, regions.

#include "image/Resize.h"
#include "kernels/Kernels.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace
{

constexpr std::int64_t kShadeTablePixels = 65536; // from here on a table of all products pays

bool SameSize(const CTarvexDib& a, const CTarvexDib& b)
{
    return a.Width() == b.Width() && a.Height() == b.Height();
}

bool IsTrueColor(const CTarvexDib& dib)
{
    return dib.BitCount() == 24 || dib.BitCount() == 32;
}

// The table takes 64 KiB of the stack, as nothing may be allocated; in a function of its own, so that no
// other call pays for them.
[[gnu::noinline]] void ShadeByTable(const CTarvexDib& to, const CTarvexDib& first, const CTarvexDib& second,
                                    const zel::ShadeFactors& factors)
{
    zel::ShadeTable table;
    zel::FillShadeTable(table, factors);
    for (int row = 0; row < to.Height(); ++row)
        zel::ShadeRowByTable(to.GetScanLine(row), to.PixelSize(), first.GetScanLine(row), first.PixelSize(),
                             second.GetScanLine(row), second.PixelSize(), table, to.Width());
}

// No rows where the width is 0, however high the image is.
int RowsWithPixels(const CTarvexDib& dib)
{
    return dib.Width() == 0 ? 0 : dib.Height();
}

// What the operations with two sources require: true colour and one size.
bool CanBlend(const CTarvexDib& target, const CTarvexDib* first, const CTarvexDib* second)
{
    if (first == nullptr || second == nullptr)
        return false;
    if (!IsTrueColor(target) || !IsTrueColor(*first) || !IsTrueColor(*second))
        return false;
    return SameSize(target, *first) && SameSize(target, *second);
}

// A fraction, confined to 0 to 1, of `whole`, truncated. What is not a number counts as 0.
int PartOf(float fraction, double whole)
{
    if (!(fraction > 0.0F))
        return 0;
    return static_cast<int>(std::min(static_cast<double>(fraction), 1.0) * whole);
}

// A picture that CopyRect reads: rows from the bottom upward.
struct PixelSource
{
    const unsigned char* bottomRow;
    std::int64_t rowBytes;
    int width;
    int height;
    bool isApart; // shares no pixel with the target
};

bool CopyRegion(const CTarvexDib& to, int destX, int destY, const PixelSource& from, int srcX, int srcY,
                int columns, int srcRowEnd)
{
    if (destX < 0 || destY < 0 || srcX < 0 || srcY < 0)
        return false;
    if (destX >= to.Width() || destY >= to.Height() || srcX >= from.width || srcY >= from.height)
        return false;

    const int count = std::min({columns, from.width - srcX, to.Width() - destX});
    const int rowEnd = std::min(srcRowEnd, from.height);
    if (count <= 0 || rowEnd <= srcY)
        return true;
    if (from.bottomRow == nullptr)
        return false;

    const int rows = std::min(rowEnd - srcY, to.Height() - destY);
    const std::int64_t bytes = static_cast<std::int64_t>(count) * to.PixelSize();
    for (int i = 0; i < rows; ++i)
    {
        // From the top row down where they may overlap, else in the order of memory.
        const int row = from.isApart ? rows - 1 - i : i;
        const std::int64_t storedRow = from.height - 1 - (srcY + row);
        const unsigned char* source =
            from.bottomRow + (storedRow * from.rowBytes + static_cast<std::int64_t>(srcX) * to.PixelSize());
        std::memmove(to.GetPixelFast(destX, destY + row), source, static_cast<std::size_t>(bytes));
    }
    return true;
}

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

    const double stepX = static_cast<double>(source.m_width) / m_width;
    const double stepY = static_cast<double>(source.m_height) / m_height;
    const Sampler sampler = source.m_sampler;

    // An unknown method leaves the source a sampler that it got at another depth, so its depth counts too.
    const bool isTriple = sampler == &CTarvexDib::BiLinearTriple || sampler == &CTarvexDib::CubicTriple;
    const int channels = isTriple ? 3 : std::min(m_pixelSize, source.m_pixelSize);

    if (sampler == &CTarvexDib::NearestNeighbour)
        zel::ResizeNearest(*this, source, stepX, stepY, channels);
    else if (sampler == &CTarvexDib::BiLinearTriple || sampler == &CTarvexDib::BiLinearQuad)
        zel::ResizeLinear(*this, source, stepX, stepY, channels);
    else if (sampler == &CTarvexDib::CubicTriple || sampler == &CTarvexDib::CubicQuad)
        zel::ResizeCubic(*this, source, stepX, stepY, channels);
    else
        ResizeBySampler(source, stepX, stepY, channels);
    return true;
}

bool CTarvexDib::AlphaBlendPerPixel(const CTarvexDib* const first, const CTarvexDib* const second) const
{
    if (!CanBlend(*this, first, second) || first->BitCount() != 32)
        return false;

    const zel::KernelTable& kernels = zel::ActiveKernels();
    for (int row = 0; row < RowsWithPixels(*this); ++row)
        kernels.blendRowByAlpha(GetScanLine(row), m_pixelSize, first->GetScanLine(row),
                                second->GetScanLine(row), second->m_pixelSize, m_width);
    return true;
}

bool CTarvexDib::AlphaBlend(const CTarvexDib* const first, const CTarvexDib* const second,
                            unsigned char alpha) const
{
    if (!CanBlend(*this, first, second))
        return false;

    const zel::KernelTable& kernels = zel::ActiveKernels();
    for (int row = 0; row < RowsWithPixels(*this); ++row)
        kernels.blendRow(GetScanLine(row), m_pixelSize, first->GetScanLine(row), first->m_pixelSize,
                         second->GetScanLine(row), second->m_pixelSize, alpha, m_width);
    return true;
}

bool CTarvexDib::TransparentBlend(const CTarvexDib* const first, const CTarvexDib* const second,
                                  unsigned char red, unsigned char green, unsigned char blue) const
{
    if (!CanBlend(*this, first, second))
        return false;

    const unsigned char key[3] = {blue, green, red};
    const zel::KernelTable& kernels = zel::ActiveKernels();
    for (int row = 0; row < RowsWithPixels(*this); ++row)
        kernels.keyRow(GetScanLine(row), m_pixelSize, first->GetScanLine(row), first->m_pixelSize,
                       second->GetScanLine(row), second->m_pixelSize, key, m_width);
    return true;
}

bool CTarvexDib::ShadePerPixel(const CTarvexDib* const first, const CTarvexDib* const second,
                               int strength) const
{
    if (!CanBlend(*this, first, second))
        return false;

    const zel::KernelTable& kernels = zel::ActiveKernels();
    const zel::ShadeFactors factors(strength);
    const bool isPlain = strength != 100 && kernels.shadeRow == &zel::ShadeRow;
    if (isPlain && std::int64_t{m_width} * m_height >= kShadeTablePixels)
    {
        ShadeByTable(*this, *first, *second, factors);
        return true;
    }
    for (int row = 0; row < RowsWithPixels(*this); ++row)
    {
        unsigned char* const to = GetScanLine(row);
        const unsigned char *const s1 = first->GetScanLine(row), *const s2 = second->GetScanLine(row);
        if (strength == 100)
            kernels.multiplyRow(to, m_pixelSize, s1, first->m_pixelSize, s2, second->m_pixelSize, m_width);
        else
            kernels.shadeRow(to, m_pixelSize, s1, first->m_pixelSize, s2, second->m_pixelSize, factors,
                             m_width);
    }
    return true;
}

bool CTarvexDib::SetAlphaPlane(const CTarvexDib* const plane) const
{
    if (plane == nullptr || BitCount() != 32 || plane->BitCount() != 8 || !SameSize(*this, *plane))
        return false;

    const zel::KernelTable& kernels = zel::ActiveKernels();
    for (int row = 0; row < RowsWithPixels(*this); ++row)
        kernels.setAlphaRow(GetScanLine(row), plane->GetScanLine(row), m_width);
    return true;
}

bool CTarvexDib::TransparentAlpha(unsigned char red, unsigned char green, unsigned char blue,
                                  bool opaqueOthers) const
{
    if (BitCount() != 32)
        return false;

    const auto key = static_cast<std::uint32_t>(red << 16 | green << 8 | blue);
    const zel::KernelTable& kernels = zel::ActiveKernels();
    for (int row = 0; row < RowsWithPixels(*this); ++row)
        kernels.keyAlphaRow(GetScanLine(row), key, opaqueOthers, m_width);
    return true;
}

bool CTarvexDib::ColorMix(float red, float green, float blue, float weight)
{
    if (BitCount() != 32)
        return false;

    const int color[3] = {PartOf(blue, 255.0), PartOf(green, 255.0), PartOf(red, 255.0)};
    const int share = PartOf(weight, 256.0);
    const zel::KernelTable& kernels = zel::ActiveKernels();
    for (int row = 0; row < RowsWithPixels(*this); ++row)
        kernels.lerpToColorRow(GetScanLine(row), color, share, m_width);
    return true;
}

bool CTarvexDib::AlphaAlpha(unsigned char alpha) const
{
    if (BitCount() != 32)
        return false;

    const zel::KernelTable& kernels = zel::ActiveKernels();
    for (int row = 0; row < RowsWithPixels(*this); ++row)
        kernels.fillAlphaRow(GetScanLine(row), alpha, m_width);
    return true;
}

bool CTarvexDib::resetAlpha()
{
    return AlphaAlpha(255);
}

bool CTarvexDib::Clone(const CTarvexDib& src, int left, int top, int right, int bottom) const
{
    if (&src == this || src.BitCount() < 24 || BitCount() < 24)
        return false;
    if (left < 0 || left >= src.m_width || right < left || right > src.m_width)
        return false;
    if (top < 0 || top >= src.m_height || bottom < top || bottom > src.m_height)
        return false;
    if (m_width == 0 || m_height == 0)
        return true;

    const double stepX = static_cast<double>(right - left) / m_width;
    const double stepY = static_cast<double>(bottom - top) / m_height;
    const auto columns =
        zel::Tabulate(m_width, [&](int i) { return (static_cast<int>(i * stepX) + left) * src.m_pixelSize; });

    // Rounding errors of very many steps could add up to one row too many.
    double y = top;
    const auto rows = zel::Tabulate(m_height,
                                    [&](int row)
                                    {
                                        y += row == 0 ? 0.0 : stepY;
                                        return std::min(static_cast<int>(y), src.m_height - 1);
                                    });
    zel::ScaleRows(*this, src, columns.get(), rows.get(), std::min(m_pixelSize, src.m_pixelSize), true);
    return true;
}

bool CTarvexDib::CopyRect(int destX, int destY, const CTarvexDib& src, int srcX, int srcY, int columns,
                          int srcRowEnd) const
{
    if (&src == this || src.BitCount() < 24 || BitCount() != src.BitCount())
        return false;

    const PixelSource from = {src.m_bits, src.m_scanLineBytes, src.m_width, src.m_height, true};
    return CopyRegion(*this, destX, destY, from, srcX, srcY, columns, srcRowEnd);
}

bool CTarvexDib::CopyRect(int destX, int destY, unsigned char* const pixels, int pixelsWidth,
                          int pixelsHeight, int bitCount, int srcX, int srcY, int columns,
                          int srcRowEnd) const
{
    if (bitCount < 24 || BitCount() != bitCount)
        return false;

    const PixelSource from = {pixels, std::int64_t{m_pixelSize} * pixelsWidth, pixelsWidth, pixelsHeight,
                              false};
    return CopyRegion(*this, destX, destY, from, srcX, srcY, columns, srcRowEnd);
}

void CTarvexDib::NearestNeighbour(double x, double y, unsigned char* out) const
{
    const unsigned char* row = GetPixelFast(0, zel::NearestTap(y, m_height, 1));
    std::memcpy(out, row + zel::NearestTap(x, m_width, m_pixelSize), static_cast<std::size_t>(m_pixelSize));
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

// The road of Resize for a sampler that has no rows of its own.
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
    const zel::LinearTap column = zel::MakeLinearTap(x, m_width, m_pixelSize);
    const zel::LinearTap row = zel::MakeLinearTap(y, m_height, 1);
    zel::LinearRow(out, channels, GetPixelFast(0, row.offset[0]), GetPixelFast(0, row.offset[1]),
                   row.fraction, &column, 1, channels);
}

void CTarvexDib::SampleCubic(double x, double y, unsigned char* out, int channels) const
{
    const zel::CubicTap column = zel::MakeCubicTap(x, m_width, m_pixelSize);
    const zel::CubicTap row = zel::MakeCubicTap(y, m_height, 1);
    const unsigned char* const rows[4] = {GetPixelFast(0, row.offset[0]), GetPixelFast(0, row.offset[1]),
                                          GetPixelFast(0, row.offset[2]), GetPixelFast(0, row.offset[3])};
    zel::CubicRow(out, channels, rows, row.weight, &column, 1, channels);
}
