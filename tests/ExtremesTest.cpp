#include "Pictures.h"

#include "ZelUtil/CVar.h"
#include "ZelUtil/OSDependant.h"
#include "ZelUtil/PolyApprox.h"
#include "ZelUtil/RGBColor.h"
#include "ZelUtil/WinDib.h"

#include <climits>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>

using namespace test;

namespace
{

// The ends of an int, a square of more than 2^31 bytes, pixels that fit without their header alone, and what
// fits the pictures here.
constexpr int kEnds[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, 2, 3, 256, 46341, 536870911, INT_MAX - 1, INT_MAX};

CWinDib Picture(int width, int height, int bits)
{
    const int table = bits <= 8 ? 1 << bits : 0;
    Bytes packed = RandomPacked(width, height, bits, table, table);
    CWinDib dib;
    EXPECT_TRUE(dib.Load(packed.data(), static_cast<int>(packed.size())));
    return dib;
}

// Pictures of every depth, without columns, without rows, of another size, and one that was never created.
std::vector<CWinDib> Pictures()
{
    std::vector<CWinDib> pictures(1);
    for (const auto& [width, height] : {std::pair(4, 3), {0, 3}, {4, 0}, {6, 2}})
        for (const int bits : {1, 4, 8, 16, 24, 32})
            pictures.push_back(Picture(width, height, bits));
    return pictures;
}

// Everything that can be seen of an image.
Bytes State(const CTarvexDib& dib)
{
    Bytes state = Packed(dib);
    state.push_back(static_cast<unsigned char>(dib.GetInterpolMethod()));
    state.push_back(dib.BitCount() == 0);
    return state;
}

bool Within(std::int64_t at, std::int64_t size)
{
    return at >= 0 && at < size;
}

// Calls `use` with every combination of `count` of the ends; with 20000 of them where there are many more.
void ForEnds(int count, const std::function<void(const int* numbers)>& use)
{
    constexpr int kMany = 20000, kNumbers = static_cast<int>(std::size(kEnds));
    int numbers[9] = {};
    const bool all = count <= 4;
    const int combinations = all ? static_cast<int>(std::pow(kNumbers, count)) : kMany;
    for (int i = 0; i < combinations; ++i)
    {
        for (int rest = i, k = 0; k < count; ++k, rest /= kNumbers)
            numbers[k] = all || RandomInt(0, 2) == 0
                             ? kEnds[all ? rest % kNumbers : RandomInt(0, kNumbers - 1)]
                             : RandomInt(0, 3);
        use(numbers);
    }
}

} // namespace

TEST(Extremes, EveryDepthInEveryRole)
{
    using Dib = CWinDib;
    using Is = const CWinDib&;
    const tagRGBQUAD colors[256] = {};
    Bytes room(2000), raw(48);
    const auto isBlend = [](Is t, Is a, Is b)
    { return IsTrueColor(t) && IsTrueColor(a) && IsTrueColor(b) && SameSize(t, a) && SameSize(t, b); };
    const auto isQuad = [](Is t, Is, Is) { return t.BitCount() == 32; };
    const auto isThere = [](Is t, Is, Is) { return t.BitCount() != 0; };
    const struct
    {
        const char* name;
        int sources;
        std::function<bool(Dib& t, Dib& a, Dib& b)> run;
        std::function<bool(Is t, Is a, Is b)> fits;
    } cases[] = {
        {"AlphaBlendPerPixel", 2, [](auto& t, auto& a, auto& b) { return t.AlphaBlendPerPixel(&a, &b); },
         [&](Is t, Is a, Is b) { return isBlend(t, a, b) && a.BitCount() == 32; }},
        {"AlphaBlend", 2, [](auto& t, auto& a, auto& b) { return t.AlphaBlend(&a, &b, 9); }, isBlend},
        {"TransparentBlend", 2,
         [](auto& t, auto& a, auto& b) { return t.TransparentBlend(&a, &b, 0, 0, 255); }, isBlend},
        {"ShadePerPixel", 2, [](auto& t, auto& a, auto& b) { return t.ShadePerPixel(&a, &b, 50); }, isBlend},
        {"SetAlphaPlane", 1, [](auto& t, auto& a, auto&) { return t.SetAlphaPlane(&a); },
         [](Is t, Is a, Is) { return t.BitCount() == 32 && a.BitCount() == 8 && SameSize(t, a); }},
        {"Resize", 1, [](auto& t, auto& a, auto&) { return t.Resize(a); },
         [](Is t, Is a, Is) { return IsTrueColor(t) && IsTrueColor(a) && (!HasPixels(t) || HasPixels(a)); }},
        {"Clone", 1, [](auto& t, auto& a, auto&) { return t.Clone(a, 0, 0, a.Width(), a.Height()); },
         [](Is t, Is a, Is) { return IsTrueColor(t) && IsTrueColor(a) && HasPixels(a); }},
        {"CopyRect", 1, [](auto& t, auto& a, auto&) { return t.CopyRect(0, 0, a, 0, 0, 4, 3); },
         [](Is t, Is a, Is)
         { return IsTrueColor(t) && t.BitCount() == a.BitCount() && HasPixels(t) && HasPixels(a); }},
        {"CopyRect of pixels", 0,
         [&](auto& t, auto&, auto&) { return t.CopyRect(0, 0, raw.data(), 4, 3, t.BitCount(), 0, 0, 4, 3); },
         [](Is t, Is, Is) { return IsTrueColor(t) && HasPixels(t); }},
        {"TransparentAlpha", 0, [](auto& t, auto&, auto&) { return t.TransparentAlpha(0, 255, 9, true); },
         isQuad},
        {"ColorMix", 0, [](auto& t, auto&, auto&) { return t.ColorMix(0.1F, 0.2F, 0.3F, 0.4F); }, isQuad},
        {"AlphaAlpha", 0, [](auto& t, auto&, auto&) { return t.AlphaAlpha(0); }, isQuad},
        {"resetAlpha", 0, [](auto& t, auto&, auto&) { return t.resetAlpha(); }, isQuad},
        {"ChangeToTrueColor", 0, [](auto& t, auto&, auto&) { return t.ChangeToTrueColor(false); }, isThere},
        {"with alpha", 0, [](auto& t, auto&, auto&) { return t.ChangeToTrueColor(true); }, isThere},
        {"SetColorTable", 0, [&](auto& t, auto&, auto&) { return t.SetColorTable(colors, 2); },
         [](Is t, Is, Is) { return t.BitCount() != 0 && t.BitCount() <= 8; }},
        {"CopyColorsFromDib", 1,
         [](auto& t, auto& a, auto&)
         {
             const int length = t.GetDibLength();
             t.CopyColorsFromDib(a);
             return t.BitCount() != 0 || t.GetDibLength() != length;
         },
         isThere},
        {"Save to memory", 0, [&](auto& t, auto&, auto&) { return t.Save(room.data(), 2000); }, isThere},
        {"CreateDDB", 0,
         [](auto& t, auto&, auto&)
         {
             CBitmap bitmap;
             return bitmap.Attach(t.CreateDDB()) != 0;
         },
         isThere}};

    std::vector<CWinDib> pictures = Pictures();
    std::vector<Bytes> states;
    for (const CWinDib& picture : pictures)
        states.push_back(State(picture));
    const std::size_t count = pictures.size();
    int done = 0;
    for (const auto& c : cases)
        for (std::size_t i = 0; i < count; ++i)
            for (std::size_t j = 0; j < (c.sources > 0 ? count : 1); ++j)
                for (std::size_t k = 0; k < (c.sources > 1 ? count : 1); ++k)
                {
                    Dib target(pictures[i]);
                    const bool fits = c.fits(target, pictures[j], pictures[k]);
                    ASSERT_EQ(c.run(target, pictures[j], pictures[k]), fits)
                        << c.name << " of " << i << ", " << j << ", " << k;
                    ASSERT_TRUE(fits || State(target) == states[i])
                        << c.name << " of " << i << ", " << j << ", " << k;
                    done += fits;
                }
    EXPECT_GT(done, 100);
    for (std::size_t i = 0; i < count; ++i)
        EXPECT_EQ(State(pictures[i]), states[i]) << i; // as sources they stay
}

TEST(Extremes, EveryIntegerOfAPicture)
{
    const CWinDib quad = Picture(2, 2, 32), palette = Picture(4, 3, 8);
    const tagRGBQUAD colors[256] = {};
    const Bytes packed = Packed(palette);
    Bytes raw(48), buffer(packed);
    const int length = static_cast<int>(packed.size());
    const struct
    {
        const char* name;
        int count;
        const CWinDib& before;
        std::function<bool(CWinDib& dib, const int* n)> run;
        std::function<bool(const int* n)> fits;
        std::function<bool(const int* n)> isAsked = [](const int*) { return true; };
    } cases[] = {
        {"SetColorTable", 1, palette, [&](auto& dib, auto* n) { return dib.SetColorTable(colors, n[0]); },
         [](auto* n) { return n[0] >= 0 && n[0] <= 256; }},
        {"Load", 1, quad, [&](auto& dib, auto* n) { return dib.Load(buffer.data(), n[0]); },
         [&](auto* n) { return n[0] >= length; }},
        {"Save", 1, palette, [&](auto& dib, auto* n) { return dib.Save(buffer.data(), n[0]); },
         [&](auto* n) { return n[0] >= length; }},
        {"ShadePerPixel", 1, quad, [&](auto& dib, auto* n) { return dib.ShadePerPixel(&quad, &quad, n[0]); },
         [](auto*) { return true; }},
        {"SetupInterpolMethod", 1, quad,
         [&](auto& dib, auto* n)
         {
             CWinDib source(quad);
             dib.SetupInterpolMethod(static_cast<CTarvexDib::InterpolMethod>(n[0]));
             return dib.GetInterpolMethod() == n[0] && dib.Resize(source) &&
                    source.GetInterpolMethod() == n[0];
         },
         [](auto*) { return true; }},
        {"Clone", 4, quad, [&](auto& dib, auto* n) { return dib.Clone(quad, n[0], n[1], n[2], n[3]); },
         [](auto* n)
         {
             return Within(n[0], 2) && Within(n[1], 2) && Within(n[2], 3) && Within(n[3], 3) &&
                    n[2] >= n[0] && n[3] >= n[1];
         }},
        {"CopyRect", 9, quad,
         [&](auto& dib, auto* n) {
             return dib.CopyRect(n[0], n[1], raw.data(), n[2], n[3], n[4] == 3 ? 32 : n[4], n[5], n[6], n[7],
                                 n[8]);
         },
         [](auto* n) {
             return Within(n[0], 2) && Within(n[1], 2) && n[4] == 3 && Within(n[5], n[2]) &&
                    Within(n[6], n[3]);
         },
         // No more is claimed than is there, unless nothing is taken.
         [](auto* n) { return (n[2] <= 4 && n[3] <= 3) || n[7] <= 0 || n[8] <= n[6]; }}};
    for (const auto& c : cases)
    {
        int done = 0;
        ForEnds(c.count,
                [&](const int* n)
                {
                    if (!c.isAsked(n))
                        return;
                    CWinDib dib(c.before);
                    const bool fits = c.fits(n);
                    EXPECT_EQ(c.run(dib, n), fits)
                        << c.name << testing::PrintToString(std::vector<int>(n, n + c.count));
                    EXPECT_TRUE(fits || State(dib) == State(c.before)) << c.name;
                    done += fits;
                });
        EXPECT_GT(done, 0) << c.name;
        EXPECT_EQ(buffer, packed);
    }
}

TEST(Extremes, EverySizeOfANewPicture)
{
    for (const int bits : {8, 24, 32, INT_MIN, -24, -1, 0, 1, 4, 16, 31, 33, 64, 256, INT_MAX})
        ForEnds(2,
                [bits](const int* n)
                {
                    const auto [width, height] = std::pair<std::int64_t, std::int64_t>(n[0], n[1]);
                    const std::int64_t header = bits == 8 ? 1064 : 40, row = (width * bits + 31) / 32 * 4;
                    const bool fits = (bits == 8 || bits == 24 || bits == 32) && width >= 0 && height >= 0 &&
                                      row <= INT_MAX && row * height + header <= INT_MAX;
                    CTarvexDib dib = RandomPicture(2, 2, 24);
                    EXPECT_EQ(dib.Create(n[0], n[1], bits), fits) << width << ", " << height << ", " << bits;
                    EXPECT_EQ(dib.BitCount(), fits ? bits : 0);
                    EXPECT_EQ(dib.GetDibLength(), fits ? header + row * height : 40);
                });
}

TEST(Extremes, EveryCornerOfACapture)
{
    CBitmap bitmap;
    CDC context;
    ASSERT_TRUE(bitmap.Attach(CreateBitmap(6, 5, 1, 32, nullptr)) && context.CreateCompatibleDC(nullptr));
    const HGDIOBJ previous = SelectObject(context, bitmap.m_hObject);
    ForEnds(4,
            [&](const int* n)
            {
                const CRect rect(n[0], n[1], n[2], n[3]);
                // The wrong way round extents count by their absolute value.
                const std::int64_t width = std::abs(std::int64_t{n[2]} - n[0]),
                                   height = std::abs(std::int64_t{n[3]} - n[1]);
                const bool isInt =
                    n[2] - std::int64_t{n[0]} == rect.Width() && n[3] - std::int64_t{n[1]} == rect.Height();
                const bool isEmpty = width == 0 || height == 0;
                const bool fits = isInt && (isEmpty || width <= INT_MAX / 4 / height);
                if (fits && width * height > 1000)
                    return; // more than a test needs
                CWinDib captured = Picture(4, 3, 24);
                ASSERT_EQ(captured.Capture(context, rect), fits)
                    << testing::PrintToString(std::vector<int>(n, n + 4));
                EXPECT_EQ(captured.BitCount(), fits ? 32 : 0);
                EXPECT_EQ(captured.Width(), !fits ? 0 : isEmpty ? 1 : width);
            });
    SelectObject(context, previous);
}

TEST(Extremes, EveryIntegerOfTheOthers)
{
    const std::string text = "0123456789";
    ForEnds(2,
            [&](const int* n)
            {
                std::string expected;
                for (std::int64_t i = std::max(n[0], 0), end = i + std::max(n[1], 0); i < end && i < 10; ++i)
                    expected += text[static_cast<std::size_t>(i)];
                EXPECT_EQ(CStdStr<char>(text).Mid(n[0], n[1]), expected) << n[0] << ", " << n[1];
            });
    for (const int number : kEnds)
    {
        const std::size_t start = static_cast<std::size_t>(std::clamp(number, 0, 10));
        EXPECT_EQ(CStdStr<char>(text).Mid(number), text.substr(start)) << number;

        const RGBColor color(static_cast<long>(number));
        EXPECT_EQ(static_cast<long>(color), number & 0xFFFFFFL);
        EXPECT_EQ(CVar_GetAt(static_cast<unsigned>(number < 0 ? number : -1)), nullptr);
        CVar_Init(number, nullptr);

        const TemporaryFolder folder;
        WriteFile(folder / "a", {1, 2});
        const std::unique_ptr<OSDependant::IFileAccess> file(OSDependant::openFile(
            folder / "a", static_cast<OSDependant::IFileAccess::FileInterpretationModes>(number)));
        short two = 0;
        EXPECT_EQ(file->getInterpretationMode(), number);
        EXPECT_TRUE(file->read(&two));
        EXPECT_EQ(two, number == 0 ? 0x0102 : 0x0201);
    }
    EXPECT_THROW(CPolyArguments{INT_MAX}, MemoryError);
    EXPECT_EQ(static_cast<long>(RGBColor(LONG_MIN)), 0);
    EXPECT_EQ(static_cast<long>(RGBColor(LONG_MAX)), 0xFFFFFF);
}
