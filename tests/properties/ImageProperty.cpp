// Every operation of the image on what a BMP file gives and on pictures made beside it, by every kernel set,
// against the operation's definition; where it is refused, nothing has changed.

#include "Properties.h"

#include "ImageReference.h"
#include "Targets.h"
#include "ZelUtil/TarvexDib.h"

#include <functional>
#include <limits>

using namespace test;
using test::HasPixels;
using test::IsTrueColor;
using test::SameSize;

namespace
{

constexpr std::size_t kControlBytes = 32;
constexpr int kMaxPixels = 1024;

// Runs `operation` on copies of `target`, once per kernel set. Where it is admitted, `define` tells the
// outcome.
void Check(const char* name, const CTarvexDib& target, bool isAdmitted,
           const std::function<bool(CTarvexDib&)>& operation, const std::function<void(CTarvexDib&)>& define)
{
    CTarvexDib expected(target);
    if (isAdmitted && HasPixels(target))
        define(expected);
    test::ForEachTarget(
        [&]
        {
            CTarvexDib result(target);
            Require(operation(result) == isAdmitted, std::string(name) + " says whether it is admitted");
            Require(SameSize(result, expected), std::string(name) + " leaves the size");
            Require(!HasPixels(target) || (result.BitCount() == expected.BitCount() &&
                                           test::PixelBytes(result) == test::PixelBytes(expected)),
                    std::string(name) + " gives the pixels of its definition");
            if (!isAdmitted)
                Require(test::Packed(result) == test::Packed(target), std::string(name) + " changes nothing");
        });
}

// A picture of 8, 24 or 32 bits with the bytes of the input, again and again.
CTarvexDib Made(int width, int height, int bits, const Bytes& bytes, unsigned seed)
{
    CTarvexDib dib;
    dib.Create(width, height, bits);
    unsigned i = seed;
    for (int row = 0; row < (width == 0 ? 0 : height); ++row)
        for (int at = 0; at < dib.BytesPerScanLine(); ++at, ++i)
            dib.GetScanLine(row)[at] =
                static_cast<unsigned char>(bytes.empty() ? i : bytes[i % bytes.size()] ^ (i >> 7));
    return dib;
}

int Depth(Input& controls)
{
    const int depths[] = {8, 24, 32, 32};
    return depths[controls.Below(4)];
}

float Fraction(Input& controls)
{
    const float special[] = {0.0F,
                             1.0F,
                             -1.0F,
                             2.0F,
                             std::numeric_limits<float>::quiet_NaN(),
                             std::numeric_limits<float>::infinity()};
    const unsigned byte = controls.Byte();
    return byte < std::size(special) ? special[byte] : static_cast<float>(byte) / 251.0F;
}

// Likely 0 to `limit`, sometimes just outside or far away.
int Near(Input& controls, int limit)
{
    const int outside[] = {
        -1, -2, INT32_MIN, INT32_MAX, 1000, std::min(limit, 9999) + 1, 4 + std::min(limit, 9999)};
    const int byte = controls.Byte();
    return byte >= 240 ? outside[byte % 7] : byte % (std::clamp(limit, 0, 199) + 1);
}

void CheckBlends(const CTarvexDib& target, const CTarvexDib& a, const CTarvexDib& b, Input controls)
{
    // Sources: a and b, the target itself, or none.
    const int which = controls.Byte();
    const auto pick = [](const CTarvexDib& to, const CTarvexDib& other, int choice) {
        return choice == 0 ? &to : choice == 1 ? nullptr : &other;
    };
    const auto first = [&](const CTarvexDib& to) { return pick(to, a, which % 8); };
    const auto second = [&](const CTarvexDib& to) { return pick(to, b, which / 8 % 8); };
    const CTarvexDib *const s1 = first(target), *const s2 = second(target);
    const bool isAdmitted = s1 != nullptr && s2 != nullptr && IsTrueColor(target) && IsTrueColor(*s1) &&
                            IsTrueColor(*s2) && SameSize(target, *s1) && SameSize(target, *s2);

    const unsigned char alpha = controls.Byte();
    const int strengths[] = {0, 50, 100, -100, -101, 101, 1000, -7};
    const int choice = controls.Byte();
    const int strength = choice < 8 ? strengths[choice] : choice % 101;
    Check(
        "AlphaBlendPerPixel", target, isAdmitted && s1->BitCount() == 32,
        [&](CTarvexDib& to) { return to.AlphaBlendPerPixel(first(to), second(to)); },
        [&](CTarvexDib& to) { reference::AlphaBlendPerPixel(to, *first(to), *second(to)); });
    Check(
        "AlphaBlend", target, isAdmitted,
        [&](CTarvexDib& to) { return to.AlphaBlend(first(to), second(to), alpha); },
        [&](CTarvexDib& to) { reference::AlphaBlend(to, *first(to), *second(to), alpha); });
    Check(
        "ShadePerPixel", target, isAdmitted,
        [&](CTarvexDib& to) { return to.ShadePerPixel(first(to), second(to), strength); },
        [&](CTarvexDib& to) { reference::ShadePerPixel(to, *first(to), *second(to), strength); });

    // A key that stands somewhere in the picture.
    const int x = controls.Byte(), y = controls.Byte();
    unsigned char key[3] = {};
    if (isAdmitted && HasPixels(target))
        std::copy_n(s1->GetPixelFast(x % target.Width(), y % target.Height()), 3, key);
    Check(
        "TransparentBlend", target, isAdmitted,
        [&](CTarvexDib& to) { return to.TransparentBlend(first(to), second(to), key[2], key[1], key[0]); },
        [&](CTarvexDib& to)
        { reference::TransparentBlend(to, *first(to), *second(to), key[2], key[1], key[0]); });

    const bool hasAlpha = target.BitCount() == 32, opaqueOthers = alpha % 2 == 1;
    Check(
        "TransparentAlpha", target, hasAlpha,
        [&](CTarvexDib& to) { return to.TransparentAlpha(key[2], key[1], key[0], opaqueOthers); },
        [&](CTarvexDib& to) { reference::TransparentAlpha(to, key[2], key[1], key[0], opaqueOthers); });
    Check(
        "SetAlphaPlane", target, s1 != nullptr && hasAlpha && s1->BitCount() == 8 && SameSize(target, *s1),
        [&](CTarvexDib& to) { return to.SetAlphaPlane(first(to)); },
        [&](CTarvexDib& to) { reference::SetAlphaPlane(to, *first(to)); });
    Check(
        "AlphaAlpha", target, hasAlpha, [&](CTarvexDib& to) { return to.AlphaAlpha(alpha); },
        [&](CTarvexDib& to) { reference::AlphaAlpha(to, alpha); });
    Check(
        "resetAlpha", target, hasAlpha, [](CTarvexDib& to) { return to.resetAlpha(); },
        [](CTarvexDib& to) { reference::AlphaAlpha(to, 255); });

    const float red = Fraction(controls), green = Fraction(controls), blue = Fraction(controls),
                weight = Fraction(controls);
    Check(
        "ColorMix", target, hasAlpha, [&](CTarvexDib& to) { return to.ColorMix(red, green, blue, weight); },
        [&](CTarvexDib& to) { reference::ColorMix(to, red, green, blue, weight); });
}

// From one image to another of any size.
void CheckRegions(const CTarvexDib& target, const CTarvexDib& source, const Bytes& raw, Input controls)
{
    const bool isTrueColor = IsTrueColor(target) && IsTrueColor(source);
    for (const auto method :
         {CTarvexDib::InterpolNearest, CTarvexDib::InterpolBiLinear, CTarvexDib::InterpolCubic})
        Check(
            "Resize", target, isTrueColor && (!HasPixels(target) || HasPixels(source)),
            [&](CTarvexDib& to)
            {
                CTarvexDib from(source);
                to.SetupInterpolMethod(method);
                const bool isDone = to.Resize(from);
                Require(test::Packed(from) == test::Packed(source), "Resize leaves its source");
                Require(!isDone || from.GetInterpolMethod() == method, "the source takes the method");
                return isDone;
            },
            [&](CTarvexDib& to) { reference::Resize(to, source, method); });

    const int width = source.Width(), height = source.Height();
    const int left = Near(controls, width - 1), top = Near(controls, height - 1);
    const int right = Near(controls, width), bottom = Near(controls, height);
    Check(
        "Clone", target,
        isTrueColor && left >= 0 && left < width && right >= left && right <= width && top >= 0 &&
            top < height && bottom >= top && bottom <= height,
        [&](CTarvexDib& to) { return to.Clone(source, left, top, right, bottom); },
        [&](CTarvexDib& to) { reference::Clone(to, source, left, top, right, bottom); });

    const int destX = Near(controls, target.Width() - 1), destY = Near(controls, target.Height() - 1);
    const int columns = Near(controls, width), rowEnd = Near(controls, height);
    const int someColumns = std::clamp(columns, -1, 10000);
    const auto isPixel = [](int x, int y, int inWidth, int inHeight)
    { return x >= 0 && y >= 0 && x < inWidth && y < inHeight; };
    const bool isTarget = isPixel(destX, destY, target.Width(), target.Height());
    Check(
        "CopyRect", target,
        isTrueColor && target.BitCount() == source.BitCount() && isTarget &&
            isPixel(left, top, width, height),
        [&](CTarvexDib& to) { return to.CopyRect(destX, destY, source, left, top, columns, rowEnd); },
        [&](CTarvexDib& to)
        { reference::CopyRect(to, destX, destY, source, left, top, someColumns, rowEnd); });

    const int rawWidth = controls.Byte() % 40;
    const int rawHeight =
        rawWidth == 0 ? 5 : static_cast<int>(raw.size()) / (rawWidth * std::max(target.PixelSize(), 1));
    Bytes pixels(raw.begin(),
                 raw.begin() + static_cast<std::ptrdiff_t>(rawWidth) * rawHeight * target.PixelSize());
    Check(
        "CopyRect from memory", target,
        IsTrueColor(target) && isTarget && isPixel(left, top, rawWidth, rawHeight),
        [&](CTarvexDib& to)
        {
            return to.CopyRect(destX, destY, pixels.data(), rawWidth, rawHeight, to.BitCount(), left, top,
                               columns, rowEnd);
        },
        [&](CTarvexDib& to)
        {
            reference::CopyRect(to, destX, destY, pixels.data(), rawWidth, rawHeight, left, top, someColumns,
                                rowEnd);
        });
    Check(
        "CopyRect at another depth", target, false,
        [&](CTarvexDib& to)
        {
            return to.CopyRect(destX, destY, pixels.data(), rawWidth, rawHeight, to.BitCount() ^ 8, left, top,
                               columns, rowEnd) ||
                   to.CopyRect(0, 0, to, 0, 0, columns, rowEnd) || to.Resize(to) || to.Clone(to, 0, 0, 1, 1);
        },
        nullptr);
}

int FullTable(const CTarvexDib& dib)
{
    return dib.BitCount() <= 8 ? 1 << dib.BitCount() : 0;
}

void CheckColors(const CTarvexDib& dib, Input controls)
{
    for (const int bits : {24, 32})
    {
        const bool stays = dib.BitCount() >= bits;
        const bool fits = (std::int64_t{dib.Width()} * bits + 31) / 32 * 4 <= INT32_MAX; // without rows, too
        Check(
            "ChangeToTrueColor", dib, stays || fits,
            [&](CTarvexDib& to)
            {
                const bool isDone = to.ChangeToTrueColor(bits == 32);
                Require(stays || !isDone || to.GetDibLength() == 40 + to.BytesPerScanLine() * to.Height(),
                        "no colours are left");
                return isDone;
            },
            [&](CTarvexDib& to)
            {
                if (to.BitCount() <= 8) // what the file's table lacks is black
                    to.SetColorTable(to.GetColorTable(), FullTable(to));
                if (!stays)
                    reference::ChangeToTrueColor(to, bits == 32);
            });
    }

    const int count = Near(controls, FullTable(dib)), from = controls.Below(3);
    std::vector<tagRGBQUAD> colors(256);
    for (tagRGBQUAD& color : colors)
        color = {controls.Byte(), controls.Byte(), controls.Byte(), controls.Byte()};
    CTarvexDib changed(dib);
    const bool isAdmitted =
        dib.BitCount() <= 8 && count >= 0 && count <= FullTable(dib) && (from != 1 || count == 0);
    const tagRGBQUAD* const table = from == 0 ? colors.data() : from == 1 ? nullptr : changed.GetColorTable();
    const Bytes before = test::Packed(dib);
    Require(changed.SetColorTable(table, count) == isAdmitted, "SetColorTable says whether it is admitted");
    if (!isAdmitted)
        Require(test::Packed(changed) == before, "SetColorTable changes nothing");
    else
    {
        Require(changed.GetDibLength() == 40 + 4 * count + dib.BytesPerScanLine() * dib.Height() &&
                    test::PixelBytes(changed) == test::PixelBytes(dib),
                "SetColorTable leaves the pixels");
        const auto* const bytes = reinterpret_cast<const unsigned char*>(changed.GetColorTable());
        const auto* const given = reinterpret_cast<const unsigned char*>(colors.data());
        Require(from != 0 || std::equal(bytes, bytes + 4 * count, given), "SetColorTable copies the colours");

        CTarvexDib other = Made(3, 2, 8, {}, 0);
        other.CopyColorsFromDib(changed);
        Require(other.GetDibLength() == 40 + 4 * count + 8 &&
                    std::equal(bytes, bytes + 4 * count,
                               reinterpret_cast<const unsigned char*>(other.GetColorTable())),
                "CopyColorsFromDib copies the colours");
    }

    CTarvexDib assigned = Made(3, 2, 8, {}, 0);
    assigned = dib;
    Require(HasPixels(dib) ? test::Packed(assigned) == before : assigned.BitCount() == 0,
            "assignment copies");
}

void CheckAll(const CTarvexDib& dib, const Bytes& bytes, Input controls)
{
    const int other = controls.Byte();
    const int width = dib.Width() + (other % 16 == 1 ? 1 : 0); // seldom another size
    const bool isFlat = !HasPixels(dib);
    const CTarvexDib a = Made(isFlat ? 0 : width, isFlat ? 7 : dib.Height(), Depth(controls), bytes, 5);
    const CTarvexDib b =
        Made(isFlat ? 0 : dib.Width(), isFlat ? 7 : dib.Height(), Depth(controls), bytes, 99);
    const int bits = Depth(controls);
    const int columns = controls.Below(64);
    const CTarvexDib c = Made(columns, controls.Byte() % (1 + kMaxPixels / (columns + 1)), bits, bytes, 1);

    CheckBlends(dib, a, b, controls);
    CheckBlends(a, dib, b, controls);
    CheckRegions(dib, c, bytes, controls);
    CheckRegions(c, dib, bytes, controls);
    CheckColors(dib, controls);
}

} // namespace

void property::Image(Input input)
{
    const Bytes controlBytes = input.Take(kControlBytes);
    Input controls(controlBytes.data(), controlBytes.size());
    Bytes file = Affordable(input.Rest());

    CTarvexDib dib;
    const int way = controls.Byte();
    if (way % 3 == 0)
        dib.Load(Scratch(file).c_str());
    else if (way % 3 == 1)
    {
        const test::File stream(std::fopen(Scratch(file).c_str(), "rb"), std::fclose);
        dib.Load(stream.get());
    }
    else if (file.size() > 14)
        dib.Load(file.data() + 14, static_cast<int>(file.size() - 14));
    if (dib.BitCount() == 0 || std::int64_t{dib.Width()} * dib.Height() > kMaxPixels)
        return;

    CheckAll(dib, file, controls);
    CTarvexDib trueColor(dib);
    if (!IsTrueColor(dib) && trueColor.ChangeToTrueColor(way % 2 == 0))
        CheckAll(trueColor, file, controls);
}
