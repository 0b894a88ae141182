#include "ZelUtil/TarvexDib.h"

#include "kernels/Kernels.h"

#include <algorithm>
#include <cstdint>

namespace
{

bool SameSize(const CTarvexDib& a, const CTarvexDib& b)
{
    return a.Width() == b.Width() && a.Height() == b.Height();
}

bool IsTrueColor(const CTarvexDib& dib)
{
    return dib.BitCount() == 24 || dib.BitCount() == 32;
}

// An image of width 0 has no rows to work on, however high it is.
int RowsWithPixels(const CTarvexDib& dib)
{
    return dib.Width() == 0 ? 0 : dib.Height();
}

// The operations with two sources require true colour and one size.
bool CanBlend(const CTarvexDib& target, const CTarvexDib* first, const CTarvexDib* second)
{
    if (first == nullptr || second == nullptr)
        return false;
    if (!IsTrueColor(target) || !IsTrueColor(*first) || !IsTrueColor(*second))
        return false;
    return SameSize(target, *first) && SameSize(target, *second);
}

// Calls `blend` with every row of the target and its sources.
template <typename Blend>
void ForEachRow(const CTarvexDib& to, const CTarvexDib& first, const CTarvexDib& second, const Blend& blend)
{
    for (int row = 0; row < RowsWithPixels(to); ++row)
        blend(zel::BlendRows{to.GetScanLine(row), to.PixelSize(), first.GetScanLine(row), first.PixelSize(),
                             second.GetScanLine(row), second.PixelSize(), to.Width()});
}

// The table takes 64 KiB of the stack, since nothing may be allocated. It is in a function of its own, so
// that no other call pays for it.
[[gnu::noinline]] void ShadeByTable(const CTarvexDib& to, const CTarvexDib& first, const CTarvexDib& second,
                                    const zel::ShadeFactors& factors)
{
    zel::ShadeTable table;
    zel::FillShadeTable(table, factors);
    ForEachRow(to, first, second, [&](const zel::BlendRows& rows) { zel::ShadeRowByTable(rows, table); });
}

// `fraction`, clamped to 0 to 1, times `whole`, truncated. NaN counts as 0.
int PartOf(float fraction, double whole)
{
    if (!(fraction > 0.0F))
        return 0;
    return static_cast<int>(std::min(static_cast<double>(fraction), 1.0) * whole);
}

} // namespace

bool CTarvexDib::AlphaBlendPerPixel(const CTarvexDib* const first, const CTarvexDib* const second) const
{
    if (!CanBlend(*this, first, second) || first->BitCount() != 32)
        return false;

    ForEachRow(*this, *first, *second, zel::ActiveKernels().blendRowByAlpha);
    return true;
}

bool CTarvexDib::AlphaBlend(const CTarvexDib* const first, const CTarvexDib* const second,
                            unsigned char alpha) const
{
    if (!CanBlend(*this, first, second))
        return false;

    const zel::KernelTable& kernels = zel::ActiveKernels();
    ForEachRow(*this, *first, *second, [&](const zel::BlendRows& rows) { kernels.blendRow(rows, alpha); });
    return true;
}

bool CTarvexDib::TransparentBlend(const CTarvexDib* const first, const CTarvexDib* const second,
                                  unsigned char red, unsigned char green, unsigned char blue) const
{
    if (!CanBlend(*this, first, second))
        return false;

    const unsigned char key[3] = {blue, green, red};
    const zel::KernelTable& kernels = zel::ActiveKernels();
    ForEachRow(*this, *first, *second, [&](const zel::BlendRows& rows) { kernels.keyRow(rows, key); });
    return true;
}

bool CTarvexDib::ShadePerPixel(const CTarvexDib* const first, const CTarvexDib* const second,
                               int strength) const
{
    if (!CanBlend(*this, first, second))
        return false;

    const zel::KernelTable& kernels = zel::ActiveKernels();
    if (strength == 100)
    {
        ForEachRow(*this, *first, *second, kernels.multiplyRow);
        return true;
    }
    const zel::ShadeFactors factors(strength);
    if (std::int64_t{m_width} * m_height >= kernels.shadeTablePixels)
        ShadeByTable(*this, *first, *second, factors);
    else
        ForEachRow(*this, *first, *second,
                   [&](const zel::BlendRows& rows) { kernels.shadeRow(rows, factors); });
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
