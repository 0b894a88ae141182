#include "ZelUtil/RGBColor.h"

#include <gtest/gtest.h>
#include <limits>

namespace
{

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

} // namespace

static_assert(sizeof(RGBColor) == 16);

TEST(RGBColor, EveryByteComesBack)
{
    for (int value = 0; value < 256; ++value)
    {
        const auto byte = static_cast<unsigned char>(value);
        const RGBColor color(byte, byte, byte, byte);
        EXPECT_EQ(color.red,
                  static_cast<float>(value * 0.0039215688593685626983642578125)); // the exact product
        EXPECT_EQ(color.redByte(), value);
        EXPECT_EQ(color.alphaByte(), value);
        EXPECT_EQ(RGBColor(static_cast<tagRGBQUAD>(color)).greenByte(), value);
        EXPECT_EQ(RGBColor(static_cast<long>(color)).blueByte(), value);
    }
}

TEST(RGBColor, PlacesOfTheChannels)
{
    EXPECT_TRUE(RGBColor() == RGBColor(0.0F, 0.0F, 0.0F, 1.0F));
    const tagRGBQUAD quad = {30, 20, 10, 99};
    RGBColor color(quad);
    EXPECT_TRUE(color == RGBColor(static_cast<unsigned char>(10), static_cast<unsigned char>(20),
                                  static_cast<unsigned char>(30), static_cast<unsigned char>(255)));
    EXPECT_EQ(static_cast<long>(color), 0x001E140AL);
    color = 0x7FFF8000L; // the top byte does not count
    EXPECT_TRUE(color == RGBColor(0.0F, 0.50196081F, 1.0F, 1.0F));
    EXPECT_TRUE(color == RGBColor(0x00FF8000L));
    EXPECT_EQ(static_cast<long>(color), 0x00FF8000L);
    EXPECT_EQ(static_cast<long>(RGBColor(-1L)), 0x00FFFFFFL);
    color.alpha = 0.3F;
    const tagRGBQUAD back = color;
    EXPECT_TRUE(back.rgbBlue == 255 && back.rgbGreen == 128 && back.rgbRed == 0 && back.rgbReserved == 0);
    RGBColor assigned(0.1F, 0.2F, 0.3F, 0.4F);
    EXPECT_EQ(&(assigned = back), &assigned);
    EXPECT_TRUE(assigned == RGBColor(back));
    EXPECT_EQ(assigned.alpha, 1.0F);
    assigned = color;
    EXPECT_EQ(assigned.alpha, 0.3F);
    assigned = 0x00010203L;
    EXPECT_TRUE(assigned == RGBColor(0x00010203L));
    EXPECT_EQ(assigned.alpha, 1.0F);

    const RGBColor parts(0.25F, 0.5F, 0.75F, 1.0F); // each accessor has its own
    EXPECT_TRUE(parts.redByte() == 63 && parts.greenByte() == 127 && parts.blueByte() == 191 &&
                parts.alphaByte() == 255);
}

TEST(RGBColor, BytesAreTruncatedAndNeverConfined)
{
    const struct
    {
        float fraction;
        int byte;
    } cases[] = {{0.5F, 127},      {1.0F, 255}, {0.99999994F, 254}, {1.5F, 126},      {-0.1F, 231},
                 {-0.001F, 0},     {-0.0F, 0},  {16777216.0F, 0},   {16777215.0F, 1}, {-16777215.0F, 255},
                 {1.00784314F, 0}, {1e9F, 0},   {1e30F, 0},         {-1e30F, 0},      {kInfinity, 0},
                 {-kInfinity, 0},  {kNan, 0}};
    for (const auto& c : cases)
        EXPECT_EQ(RGBColor(c.fraction, 0.0F, 0.0F, 0.0F).redByte(), c.byte) << c.fraction;
}

TEST(RGBColor, EqualityIsExact)
{
    const RGBColor color(0.1F, 0.2F, 0.3F, 0.4F);
    for (int channel = 0; channel < 4; ++channel)
    {
        RGBColor other(color);
        float* const channels[] = {&other.red, &other.green, &other.blue, &other.alpha};
        EXPECT_TRUE(other == color);
        *channels[channel] += 1e-7F;
        EXPECT_FALSE(other == color);
        *channels[channel] = kNan;
        EXPECT_FALSE(other == RGBColor(other));
    }
    EXPECT_TRUE(RGBColor(0.0F, 0.0F, 0.0F, 0.0F) == RGBColor(-0.0F, -0.0F, -0.0F, -0.0F));
}
