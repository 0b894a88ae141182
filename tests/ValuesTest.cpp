#include "ZelUtil/RGBColor.h"
#include "ZelUtil/StdStr.h"
#include "ZelUtil/ZelBox.h"

#include <array>
#include <climits>
#include <cmath>

#include <gtest/gtest.h>

TEST(RGBColor, FormsHaveTheirChannelsInPlace)
{
    const RGBColor color(0.25F, 0.5F, 0.75F, 0.3F);
    tagRGBQUAD quad = color;
    EXPECT_TRUE(quad.rgbRed == 63 && quad.rgbGreen == 127 && quad.rgbBlue == 191 && quad.rgbReserved == 0);
    quad.rgbReserved = 99;
    RGBColor fromQuad = color, fromLong = color;
    EXPECT_TRUE(&(fromQuad = quad) == &fromQuad && &(fromLong = 0x7FBF7F3FL) == &fromLong);
    EXPECT_TRUE(fromQuad == RGBColor(quad) && fromQuad == fromLong && fromQuad.alpha == 1.0F);
    EXPECT_TRUE(fromQuad.redByte() == 63 && fromQuad.blueByte() == 191 && color.alphaByte() == 76);
    EXPECT_TRUE((fromQuad = color) == color && RGBColor() == RGBColor(0L));
    for (const auto& [from, to] : {std::pair(LONG_MIN, 0L), {LONG_MAX, 0xFFFFFFL}, {0xBF7F3FL, 0xBF7F3FL}})
        EXPECT_EQ(static_cast<long>(RGBColor(from)), to);
    for (const RGBColor& other : {RGBColor(0.2F, 0.5F, 0.75F, 0.3F), RGBColor(0.25F, 0.6F, 0.75F, 0.3F),
                                  RGBColor(0.25F, 0.5F, 0.7F, 0.3F), RGBColor(0.25F, 0.5F, 0.75F, 0.4F)})
        EXPECT_FALSE(other == color);
}

TEST(RGBColor, BytesAreTruncatedAndNeverClamped)
{
    for (int value = 0; value < 256; ++value)
    {
        const auto byte = static_cast<unsigned char>(value);
        const auto part = static_cast<float>(value * 0.0039215688593685627);
        const RGBColor color(byte, byte, byte, byte);
        EXPECT_TRUE(color == RGBColor(part, part, part, part) && color.redByte() == value) << value;
    }
    const std::pair<float, int> cases[] = {{0.99999994F, 254}, {1.5F, 126},         {-0.1F, 231},
                                           {16777215.0F, 1},   {-16777215.0F, 255}, {1e9F, 0},
                                           {1e30F, 0},         {-INFINITY, 0},      {NAN, 0}};
    for (const auto& [fraction, byte] : cases)
        EXPECT_EQ(RGBColor(fraction, 0.0F, 0.0F, 0.0F).redByte(), byte) << fraction;
}

TEST(ZelBox, ContainsWhatIsStrictlyInside)
{
    const double coordinates[] = {-1, 0, 5, 10, 11, NAN};
    for (int i = 0; i < 6 * 6 * 6; ++i)
    {
        const double x = coordinates[i % 6], y = coordinates[i / 6 % 6], z = coordinates[i / 36];
        const ZelBox box(0, 0, 0, 10, 10, 10);
        EXPECT_EQ(box.containsVector({x, y, z}, true), x == 5 && y == 5) << i;
        EXPECT_EQ(box.containsVector({x, y, z}, false), x == 5 && y == 5 && z == 5) << i;
    }
}

TEST(ZelBox, CopiesBecomeValidAndAssignmentsDoNot)
{
    using Fields = std::array<double, 7>;
    const auto fields = [](const ZelBox& b)
    { return Fields{b.m_min.x, b.m_min.y, b.m_min.z, b.m_max.x, b.m_max.y, b.m_max.z, double(b.isValid())}; };
    ZelBox box({1, 2}, {3, 4, 5}), assigned(6, 7, 8, 9, 10, 11);
    EXPECT_EQ(fields(ZelBox()), Fields());
    EXPECT_EQ(fields(ZelBox(1, 2, 3, 4)), (Fields{1, 2, 0, 3, 4, 0, 1}));
    EXPECT_EQ(fields(assigned), (Fields{6, 7, 8, 9, 10, 11, 1}));
    box.setValid(false);
    EXPECT_EQ(fields(ZelBox(box)), (Fields{1, 2, 0, 3, 4, 5, 1}));
    assigned.setZero();
    EXPECT_EQ(fields(assigned), (Fields{0, 0, 0, 0, 0, 0, 1}));
    EXPECT_EQ(fields(assigned = box), (Fields{1, 2, 0, 3, 4, 5, 0}));

    const ZelBox sides({10, 0, 30}, {0, 20, 0});
    const auto [x, y, z] = sides.getBoxCenter();
    EXPECT_TRUE(sides.getWidth() == 10 && sides.getHeight() == 20 && sides.getDepth() == 30);
    EXPECT_TRUE(x == 5 && y == 10 && z == 15 && std::signbit(ZelBox().getWidth()));
}

TEST(ZelBox, ConstantsAndAngles)
{
    EXPECT_TRUE(PI == 4 * std::atan(1.0) && TWO_PI == 2 * PI && HALF_PI == PI / 2 &&
                SQRT_DBL_MAX == 1.3407807929942596e154);
    EXPECT_TRUE(radToDegree(1.0) == 57.29577951308239 && radToDegree(3.14159265358979) == 180.00000000000003);
    EXPECT_EQ(degreeToRad(450.0), 7.853981633974476);
}

TEST(StdStr, TakesNullForTheEmptyTextAndClips)
{
    using Str = CStdStr<char>;
    const char* const null = nullptr;
    Str text = "a text that is too long for the short string buffer";
    text = text.c_str() + 40; // its own tail
    text += null;
    (text += " to ") += Str("bits");
    EXPECT_TRUE(text == "ring buffer to bits" && text.Compare(null) > 0 && text.Compare("s") < 0);
    EXPECT_TRUE(text.Find(null) == -1 && text.Find("bu") == 5 && text.Find(Str("but")) == -1);
    EXPECT_TRUE(text.ReverseFind('t') == 17 && text.ReverseFind('?') == -1);
    EXPECT_EQ(text.Mid(5, 6) + "," + text.Mid(-3, 4) + "," + text.Mid(15, INT_MAX), "buffer,ring,bits");
    EXPECT_EQ(text.Mid(5, -1) + text.Mid(INT_MAX, 1) + text.Mid(20) + text.Mid(INT_MIN), text);
    text = null;
    for (const std::uintptr_t resource : {std::uintptr_t{0}, std::uintptr_t{1}, std::uintptr_t{65535}})
        EXPECT_EQ(Str(reinterpret_cast<const char*>(resource)), text);
    EXPECT_LT(Str("z"), Str("\xDC"));
    EXPECT_EQ(Str(" \t\r\n\v\f\xE4 b ").TrimLeft() + Str(" \xE4 \t\r\n\v\f").TrimRight(), "\xE4 b  \xE4");
    EXPECT_EQ(Str(" \t ").TrimLeft() + Str(" \t ").TrimRight(), "");
}
