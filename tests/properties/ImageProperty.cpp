// Every image operation, on every instruction set, against its reference, byte for byte. Pixels, padding,
// header, colours and method are compared, of the target and of both sources, and a refused operation leaves
// them all as they were. One input describes several calls.

#include "Properties.h"

#include "ImageReference.h"
#include "Targets.h"

#include <climits>
#include <random>

using namespace test;

namespace
{

constexpr int kMaxCalls = 12;
constexpr int kTrueColor = 0, kAny = -1; // depths: 24 or 32, and all of them
constexpr bool kSameSize = false, kScaled = true;

// The images that take part in a call, and the arguments of every operation.
struct Call
{
    CTarvexDib target, first, second;
    int firstRole, secondRole;
    int right, bottom, left, top, destX, destY, columns, strength;
    float red, green, blue, weight;
    unsigned char key[3] = {}; // blue, green, red
    unsigned char alpha;
    bool flag;

    // A source is the target itself, null, or a picture of its own. The second form has no null.
    CTarvexDib* Source(int role, CTarvexDib& own) { return role == 0 ? &target : role == 1 ? nullptr : &own; }
    CTarvexDib* First() { return Source(firstRole, first); }
    CTarvexDib* Second() { return Source(secondRole, second); }
    CTarvexDib& Other() { return firstRole == 0 ? target : first; }
    bool HasOther() { return firstRole != 0; }
};

bool HasPixel(const CTarvexDib& dib, int x, int y)
{
    return x >= 0 && y >= 0 && x < dib.Width() && y < dib.Height();
}

bool FitsTarget(const Call& c, const CTarvexDib* dib, int bits = kTrueColor)
{
    return dib != nullptr && dib->Width() == c.target.Width() && dib->Height() == c.target.Height() &&
           (bits == kTrueColor ? dib->BitCount() >= 24 : dib->BitCount() == bits);
}

bool CanBlend(Call& c)
{
    return c.target.BitCount() >= 24 && FitsTarget(c, c.First()) && FitsTarget(c, c.Second());
}

bool IsQuad(Call& c)
{
    return c.target.BitCount() == 32;
}

// Between different images of true colour.
bool CanCopy(Call& c)
{
    return c.firstRole != 0 && c.target.BitCount() >= 24 && c.first.BitCount() >= 24;
}

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
    bool (*admits)(Call& c);
    bool (*run)(Call& c);
    void (*reference)(Call& c);
    bool isScaled = false; // the first source has a size of its own
    int targetBits = kTrueColor, firstBits = kTrueColor;
};

// The last one takes the most paths and is tried most often.
constexpr Operation kOperations[] = {
    {"AlphaBlendPerPixel", [](Call& c) { return CanBlend(c) && c.First()->BitCount() == 32; },
     [](Call& c) { return c.target.AlphaBlendPerPixel(c.First(), c.Second()); },
     [](Call& c) { reference::AlphaBlendPerPixel(c.target, *c.First(), *c.Second()); }},
    {"AlphaBlend", CanBlend, [](Call& c) { return c.target.AlphaBlend(c.First(), c.Second(), c.alpha); },
     [](Call& c) { reference::AlphaBlend(c.target, *c.First(), *c.Second(), c.alpha); }},
    {"TransparentBlend", CanBlend,
     [](Call& c) { return c.target.TransparentBlend(c.First(), c.Second(), c.key[2], c.key[1], c.key[0]); },
     [](Call& c)
     { reference::TransparentBlend(c.target, *c.First(), *c.Second(), c.key[2], c.key[1], c.key[0]); }},
    {"ShadePerPixel", CanBlend,
     [](Call& c) { return c.target.ShadePerPixel(c.First(), c.Second(), c.strength); },
     [](Call& c) { reference::ShadePerPixel(c.target, *c.First(), *c.Second(), c.strength); }},
    {"SetAlphaPlane", [](Call& c) { return IsQuad(c) && FitsTarget(c, c.First(), 8); },
     [](Call& c) { return c.target.SetAlphaPlane(c.First()); },
     [](Call& c) { reference::SetAlphaPlane(c.target, *c.First()); }, kSameSize, 32, 8},
    {"TransparentAlpha", IsQuad,
     [](Call& c) { return c.target.TransparentAlpha(c.key[2], c.key[1], c.key[0], c.flag); },
     [](Call& c) { reference::TransparentAlpha(c.target, c.key[2], c.key[1], c.key[0], c.flag); }, kSameSize,
     32},
    {"ColorMix", IsQuad, [](Call& c) { return c.target.ColorMix(c.red, c.green, c.blue, c.weight); },
     [](Call& c) { reference::ColorMix(c.target, c.red, c.green, c.blue, c.weight); }, kSameSize, 32},
    {"AlphaAlpha and resetAlpha", IsQuad,
     [](Call& c) { return c.flag ? c.target.resetAlpha() : c.target.AlphaAlpha(c.alpha); },
     [](Call& c) { reference::AlphaAlpha(c.target, c.flag ? 255 : c.alpha); }, kSameSize, 32},
    {"ChangeToTrueColor", [](Call& c) { return c.target.BitCount() != 0; },
     [](Call& c) { return c.target.ChangeToTrueColor(c.flag); },
     [](Call& c) { reference::ChangeToTrueColor(c.target, c.flag); }, kSameSize, kAny},
    {"Clone",
     [](Call& c)
     {
         return CanCopy(c) && HasPixel(c.first, c.left, c.top) && c.left <= c.right &&
                c.right <= c.first.Width() && c.top <= c.bottom && c.bottom <= c.first.Height();
     },
     [](Call& c) { return c.target.Clone(c.Other(), c.left, c.top, c.right, c.bottom); },
     [](Call& c) { reference::Clone(c.target, c.first, c.left, c.top, c.right, c.bottom); }, kScaled},
    {"CopyRect",
     [](Call& c)
     {
         return CanCopy(c) && c.target.BitCount() == c.first.BitCount() &&
                HasPixel(c.target, c.destX, c.destY) && HasPixel(c.first, c.left, c.top);
     },
     [](Call& c)
     {
         if (c.flag || c.firstRole == 0)
             return c.target.CopyRect(c.destX, c.destY, c.Other(), c.left, c.top, c.columns, c.bottom);
         return c.target.CopyRect(c.destX, c.destY, RawPixels(c.first).data(), c.first.Width(),
                                  c.first.Height(), c.first.BitCount(), c.left, c.top, c.columns, c.bottom);
     },
     [](Call& c)
     { reference::CopyRect(c.target, c.destX, c.destY, c.first, c.left, c.top, c.columns, c.bottom); },
     kScaled},
    {"Resize", [](Call& c) { return CanCopy(c) && (HasPixel(c.first, 0, 0) || !HasPixel(c.target, 0, 0)); },
     [](Call& c) { return c.target.Resize(c.Other()); },
     [](Call& c)
     {
         c.first.SetupInterpolMethod(c.target.GetInterpolMethod());
         reference::Resize(c.target, c.first, c.target.GetInterpolMethod());
     },
     kScaled}};

// A picture whose bytes, padding too, follow from the input: random, multiples of 18 (cubic at whole factors
// puts them between two bytes), two values, a gradient, stripes. 0 bits give an empty image.
CTarvexDib MakePicture(Input& input, int width, int height, int bits)
{
    const unsigned pattern = input.Byte(), step = input.Byte();
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

int MakeDepth(Input& input, int wanted)
{
    constexpr int kDepths[] = {0, 1, 4, 8, 16, 24, 32};
    const int byte = input.Byte();
    if (wanted == kAny || byte % 16 == 0)
        return kDepths[byte / 16 % 7];
    return wanted != kTrueColor ? wanted : byte % 2 == 0 ? 24 : 32;
}

// The lengths of a source and a target along one axis, about `length` where it is the longer one.
struct Scale
{
    Scale(Input& input, int length)
    {
        const int kind = input.Below(5), number = input.Byte();
        const int ratios[][2] = {{1 + number % 17, 1},
                                 {1, 1 + number % 17},
                                 {1 + number / 8, 3 + 2 * (number % 8)},
                                 {1 + number / 7, 2 << number % 7},
                                 {1 + number % 29, 1 + number / 8}};
        const auto& [source, target] = ratios[kind];
        const int times = std::max(length / std::max(source, target), 1);
        from = times * source;
        to = times * target;
    }

    int from, to;
};

// Mostly 0 to `limit`, sometimes beyond or as far away as an int reaches.
int Near(Input& input, int limit)
{
    const int outside[] = {-1, limit + (limit < INT_MAX), INT_MIN, INT_MIN + 1, INT_MAX};
    const int byte = input.Byte();
    return byte >= 240 ? outside[byte % 5] : static_cast<int>(byte * (std::int64_t{limit} + 1) / 240);
}

Call MakeCall(Input& input, const Operation& operation)
{
    // Every fourth target or source is wide, with few rows; some have no columns or no rows.
    const bool isWide = input.Below(4) == 0;
    const int columns = isWide ? 1000 + 5 * input.Byte() : 1 + input.Below(72);
    const int rows = isWide ? 1 : 1 + input.Below(24), odd = input.Below(64);
    Input again = input; // gives y the scale of x
    const Scale x(input, columns), y(input.Below(2) == 0 ? again : input, rows);
    const int toX = odd == 0 ? 0 : x.to;
    const int toY = odd == 1 ? 0 : std::min(y.to, 1 + 4000 / x.to);
    const int fromX = odd == 2 ? 0 : operation.isScaled ? x.from : toX + (odd == 4);
    const int fromY = odd == 3             ? 0
                      : operation.isScaled ? std::min(y.from, 1 + 30000 / x.from)
                                           : toY + (odd == 5);
    const auto fraction = [&] { return static_cast<float>(Near(input, 9)) / 9.0F; };

    Call c = {.target = MakePicture(input, toX, toY, MakeDepth(input, operation.targetBits)),
              .first = MakePicture(input, fromX, fromY, MakeDepth(input, operation.firstBits)),
              .second = MakePicture(input, toX + (odd == 6), toY + (odd == 7), MakeDepth(input, kTrueColor)),
              .firstRole = input.Below(6),
              .secondRole = input.Below(6),
              .right = Near(input, fromX),
              .bottom = Near(input, fromY),
              .left = Near(input, c.right),
              .top = Near(input, c.bottom),
              .destX = Near(input, toX - 1),
              .destY = Near(input, toY - 1),
              .columns = Near(input, fromX),
              .strength = input.Below(3) == 0 ? 100 : Near(input, 99),
              .red = fraction(),
              .green = fraction(),
              .blue = fraction(),
              .weight = fraction(),
              .alpha = input.Byte(),
              .flag = input.Below(2) == 0};
    c.target.SetupInterpolMethod(static_cast<CTarvexDib::InterpolMethod>(input.Below(3)));
    const CTarvexDib& keyed = input.Below(2) == 0 ? c.target : c.first;
    if (keyed.BitCount() >= 24 && HasPixel(keyed, 0, 0))
        std::copy_n(keyed.GetPixelFast(0, 0), 3, c.key);
    return c;
}

// Everything that can be seen of the images.
Bytes State(const Call& c)
{
    Bytes state;
    for (const CTarvexDib* const dib : {&c.target, &c.first, &c.second})
    {
        const Bytes packed = Packed(*dib);
        state.insert(state.end(), packed.begin(), packed.end());
        state.push_back(static_cast<unsigned char>(dib->GetInterpolMethod() + 4 * dib->PixelSize()));
    }
    return state;
}

void Check(const Operation& operation, const Call& call)
{
    Call expected(call);
    const bool isAdmitted = operation.admits(expected);
    if (isAdmitted)
        operation.reference(expected);
    const Bytes state = State(expected);
    ForEachTarget(
        [&]
        {
            Call result(call);
            Require(operation.run(result) == isAdmitted,
                    std::string(operation.name) + " is refused where it has to be");
            Require(State(result) == state,
                    std::string(operation.name) + " gives the bytes of its reference");
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
