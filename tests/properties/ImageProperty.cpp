// Every image operation, on every instruction set, against its reference, byte for byte. Pixels, padding,
// header, colours and method are compared, of the target and of both sources, and a refused operation leaves
// them all as they were. One input describes several calls.

#include "Properties.h"

#include "ImageReference.h"
#include "Targets.h"

#include <climits>
#include <limits>
#include <random>

using namespace test;

namespace
{

constexpr int kMaxCalls = 12;
constexpr int kTrueColor = 0, kAny = -1; // kTrueColor: 24 or 32 bits. kAny: any depth
constexpr bool kSameSize = false, kScaled = true;

bool HasPixel(const CTarvexDib& dib, int x, int y)
{
    return x >= 0 && y >= 0 && x < dib.Width() && y < dib.Height();
}

// A picture whose bytes, padding too, follow from the input: random; multiples of 18, whose cubic sums at
// integer factors lie on rounding borders; two values; a gradient; stripes. Its depth is mostly the wanted
// one.
CTarvexDib MakePicture(Input& input, int width, int height, int wanted)
{
    constexpr int kDepths[] = {0, 1, 4, 8, 16, 24, 32};
    const unsigned choice = input.Byte(), pattern = input.Byte(), step = input.Byte();
    int bits = wanted != kTrueColor ? wanted : choice % 2 == 0 ? 24 : 32;
    if (wanted == kAny || choice % 16 == 0)
        bits = kDepths[choice / 16 % 7];
    if (bits == 0)
        return {};
    std::minstd_rand random(1 + pattern + 256 * step);
    const int table = bits > 8 ? 0 : 1 + static_cast<int>(random() % (1U << bits));
    Bytes packed = BlankPacked(width, height, bits, table, table);
    for (std::size_t i = 40; i < packed.size(); ++i)
    {
        const std::size_t dice = random() >> 8, pair = dice % 2 * (step % 2 == 0 ? 255 : 1);
        const std::size_t values[] = {dice, dice % 15 * 18, pair, step * i / 16,
                                      i / (1 + step % 8) % 2 * 255};
        packed[i] = static_cast<unsigned char>(values[pattern % std::size(values)]);
    }
    return FromPacked(packed);
}

// The lengths of a source and a target along one axis, about `length` where it is the longer one.
std::pair<int, int> MakeLengths(Input& input, int length)
{
    const int kind = input.Below(5), number = input.Byte();
    const int ratios[][2] = {{1 + number % 17, 1},
                             {1, 1 + number % 17},
                             {1 + number / 8, 3 + 2 * (number % 8)},
                             {1 + number / 7, 2 << number % 7},
                             {1 + number % 29, 1 + number / 8}};
    const auto& [source, target] = ratios[kind];
    const int times = std::max(length / std::max(source, target), 1);
    return {times * source, times * target};
}

// Mostly 0 to `limit`, sometimes beyond or as far away as an int reaches.
int Near(Input& input, int limit)
{
    const int outside[] = {-1, limit + (limit < INT_MAX), INT_MIN, INT_MIN + 1, INT_MAX};
    const int byte = input.Byte();
    return byte >= 240 ? outside[byte % 5] : static_cast<int>(byte * (std::int64_t{limit} + 1) / 240);
}

float MakeFraction(Input& input)
{
    const int ninths = Near(input, 9);
    return ninths == INT_MIN ? std::numeric_limits<float>::quiet_NaN() : static_cast<float>(ninths) / 9.0F;
}

// The images that take part in a call, the arguments of every operation, and which operations admit them. A
// source is the target itself, null, or a picture of its own.
struct Call
{
    CTarvexDib target, first, second;
    int firstRole, secondRole, right, bottom, left, top, destX, destY, columns, strength;
    float red, green, blue, weight;
    unsigned char alpha, key[3] = {}; // blue, green, red
    bool flag;

    // `odd` selects a rare size of the second source.
    Call(Input& input, int targetBits, int firstBits, int toX, int toY, int fromX, int fromY, int odd)
        : target(MakePicture(input, toX, toY, targetBits)),
          first(MakePicture(input, fromX, fromY, firstBits)),
          second(MakePicture(input, toX + (odd == 6), toY + (odd == 7), kTrueColor)),
          firstRole(input.Below(6)), secondRole(input.Below(6)), right(Near(input, fromX)),
          bottom(Near(input, fromY)), left(Near(input, right)), top(Near(input, bottom)),
          destX(Near(input, toX - 1)), destY(Near(input, toY - 1)), columns(Near(input, fromX)),
          strength(input.Below(3) == 0 ? 100 : Near(input, 112)), red(MakeFraction(input)),
          green(MakeFraction(input)), blue(MakeFraction(input)), weight(MakeFraction(input)),
          alpha(input.Byte()), flag(input.Below(2) == 0)
    {
        if (alpha % 2 == 0 && strength >= -INT_MAX) // the largest shaded values occur near -100
            strength = -strength;
        target.SetupInterpolMethod(static_cast<CTarvexDib::InterpolMethod>(input.Below(3)));
        const CTarvexDib& keyed = input.Below(2) == 0 ? target : first;
        if (keyed.BitCount() >= 24 && HasPixel(keyed, 0, 0))
            std::copy_n(keyed.GetPixelFast(0, 0), 3, key);
    }

    CTarvexDib* First() { return firstRole == 0 ? &target : firstRole == 1 ? nullptr : &first; }
    CTarvexDib* Second() { return secondRole == 0 ? &target : secondRole == 1 ? nullptr : &second; }
    CTarvexDib& Other() { return firstRole == 0 ? target : first; } // where null cannot be passed

    bool IsPicture() { return target.BitCount() != 0; }
    bool IsQuad() { return target.BitCount() == 32; }
    bool Fits(const CTarvexDib* dib, int minBits, int maxBits = 32)
    {
        return dib != nullptr && dib->Width() == target.Width() && dib->Height() == target.Height() &&
               dib->BitCount() >= minBits && dib->BitCount() <= maxBits;
    }
    bool CanBlend() { return target.BitCount() >= 24 && Fits(First(), 24) && Fits(Second(), 24); }
    bool CanBlendPerPixel() { return CanBlend() && Fits(First(), 32); }
    bool CanSetPlane() { return IsQuad() && Fits(First(), 8, 8); }
    bool CanCopy() { return firstRole != 0 && target.BitCount() >= 24 && first.BitCount() >= 24; }
    bool CanClone()
    {
        return CanCopy() && HasPixel(first, left, top) && left <= right && right <= first.Width() &&
               top <= bottom && bottom <= first.Height();
    }
    bool CanCopyRect()
    {
        return CanCopy() && target.BitCount() == first.BitCount() && HasPixel(target, destX, destY) &&
               HasPixel(first, left, top);
    }
    bool CanResize() { return CanCopy() && (HasPixel(first, 0, 0) || !HasPixel(target, 0, 0)); }
};

// The pixels without padding, in exactly as many bytes as they have.
Bytes RawPixels(const CTarvexDib& dib)
{
    Bytes raw;
    for (int row = 0; row < dib.Height(); ++row)
        raw.insert(raw.end(), dib.GetScanLine(row), dib.GetScanLine(row) + dib.PixelSize() * dib.Width());
    raw.shrink_to_fit();
    return raw;
}

struct Operation
{
    const char* name;
    bool (Call::*admits)();
    bool isScaled; // the first source has a size of its own
    int targetBits;
    bool (*run)(Call& c);
    void (*reference)(Call& c);
    int firstBits = kTrueColor;
};

// The last one takes the most paths and is tried most often.
constexpr Operation kOperations[] = {
    {"AlphaBlendPerPixel", &Call::CanBlendPerPixel, kSameSize, kTrueColor,
     [](Call& c) { return c.target.AlphaBlendPerPixel(c.First(), c.Second()); },
     [](Call& c) { reference::AlphaBlendPerPixel(c.target, *c.First(), *c.Second()); }},
    {"AlphaBlend", &Call::CanBlend, kSameSize, kTrueColor,
     [](Call& c) { return c.target.AlphaBlend(c.First(), c.Second(), c.alpha); },
     [](Call& c) { reference::AlphaBlend(c.target, *c.First(), *c.Second(), c.alpha); }},
    {"TransparentBlend", &Call::CanBlend, kSameSize, kTrueColor,
     [](Call& c) { return c.target.TransparentBlend(c.First(), c.Second(), c.key[2], c.key[1], c.key[0]); },
     [](Call& c)
     { reference::TransparentBlend(c.target, *c.First(), *c.Second(), c.key[2], c.key[1], c.key[0]); }},
    {"ShadePerPixel", &Call::CanBlend, kSameSize, kTrueColor,
     [](Call& c) { return c.target.ShadePerPixel(c.First(), c.Second(), c.strength); },
     [](Call& c) { reference::ShadePerPixel(c.target, *c.First(), *c.Second(), c.strength); }},
    {"SetAlphaPlane", &Call::CanSetPlane, kSameSize, 32,
     [](Call& c) { return c.target.SetAlphaPlane(c.First()); },
     [](Call& c) { reference::SetAlphaPlane(c.target, *c.First()); }, 8},
    {"TransparentAlpha", &Call::IsQuad, kSameSize, 32,
     [](Call& c) { return c.target.TransparentAlpha(c.key[2], c.key[1], c.key[0], c.flag); },
     [](Call& c) { reference::TransparentAlpha(c.target, c.key[2], c.key[1], c.key[0], c.flag); }},
    {"ColorMix", &Call::IsQuad, kSameSize, 32,
     [](Call& c) { return c.target.ColorMix(c.red, c.green, c.blue, c.weight); },
     [](Call& c) { reference::ColorMix(c.target, c.red, c.green, c.blue, c.weight); }},
    {"AlphaAlpha and resetAlpha", &Call::IsQuad, kSameSize, 32,
     [](Call& c) { return c.flag ? c.target.resetAlpha() : c.target.AlphaAlpha(c.alpha); },
     [](Call& c) { reference::AlphaAlpha(c.target, c.flag ? 255 : c.alpha); }},
    {"ChangeToTrueColor", &Call::IsPicture, kSameSize, kAny,
     [](Call& c) { return c.target.ChangeToTrueColor(c.flag); },
     [](Call& c) { reference::ChangeToTrueColor(c.target, c.flag); }},
    {"Clone", &Call::CanClone, kScaled, kTrueColor,
     [](Call& c) { return c.target.Clone(c.Other(), c.left, c.top, c.right, c.bottom); },
     [](Call& c) { reference::Clone(c.target, c.first, c.left, c.top, c.right, c.bottom); }},
    {"CopyRect", &Call::CanCopyRect, kScaled, kTrueColor,
     [](Call& c)
     {
         if (c.flag || c.firstRole == 0)
             return c.target.CopyRect(c.destX, c.destY, c.Other(), c.left, c.top, c.columns, c.bottom);
         return c.target.CopyRect(c.destX, c.destY, RawPixels(c.first).data(), c.first.Width(),
                                  c.first.Height(), c.first.BitCount(), c.left, c.top, c.columns, c.bottom);
     },
     [](Call& c)
     { reference::CopyRect(c.target, c.destX, c.destY, c.first, c.left, c.top, c.columns, c.bottom); }},
    {"Resize", &Call::CanResize, kScaled, kTrueColor, [](Call& c) { return c.target.Resize(c.Other()); },
     [](Call& c)
     {
         c.first.SetupInterpolMethod(c.target.GetInterpolMethod());
         reference::Resize(c.target, c.first, c.target.GetInterpolMethod());
     }}};

Call MakeCall(Input& input, const Operation& operation)
{
    // Every fourth target or source is wide, with few rows; some have no columns or no rows.
    const bool isWide = input.Below(4) == 0;
    const int columns = isWide ? 1000 + 5 * input.Byte() : 1 + input.Below(72);
    const int rows = isWide ? 1 : 1 + input.Below(24), odd = input.Below(64);
    Input again = input; // gives y the scale of x
    const auto [sourceX, targetX] = MakeLengths(input, columns);
    const auto [sourceY, targetY] = MakeLengths(input.Below(2) == 0 ? again : input, rows);
    const int toX = odd == 0 ? 0 : targetX, toY = odd == 1 ? 0 : std::min(targetY, 1 + 4000 / targetX);
    const int fromX = operation.isScaled ? sourceX : toX + (odd == 4);
    const int fromY = operation.isScaled ? std::min(sourceY, 1 + 30000 / sourceX) : toY + (odd == 5);
    return Call(input, operation.targetBits, operation.firstBits, toX, toY, odd == 2 ? 0 : fromX,
                odd == 3 ? 0 : fromY, odd);
}

// Everything that can be seen of the images.
Bytes State(const Call& c)
{
    Bytes state;
    for (const CTarvexDib* const dib : {&c.target, &c.first, &c.second})
    {
        std::ranges::copy(Packed(*dib), std::back_inserter(state));
        state.push_back(static_cast<unsigned char>(dib->GetInterpolMethod() + 4 * dib->PixelSize()));
    }
    return state;
}

void Check(const Operation& operation, const Call& call)
{
    Call expected(call);
    const bool isAdmitted = (expected.*operation.admits)();
    if (isAdmitted)
        operation.reference(expected);
    const Bytes state = State(expected);
    ForEachTarget(
        [&]
        {
            Call result(call);
            Require(operation.run(result) == isAdmitted && State(result) == state,
                    std::string(operation.name) + " is admitted, and gives bytes, as its reference does");
        });
}

} // namespace

void property::Image(Input input)
{
    constexpr int kOperationCount = static_cast<int>(std::size(kOperations));
    for (int i = 0; i < kMaxCalls && !input.IsEmpty(); ++i)
    {
        const int choice = std::min(input.Below(kOperationCount * 3 / 2), kOperationCount - 1);
        Check(kOperations[choice], MakeCall(input, kOperations[choice]));
    }
}
