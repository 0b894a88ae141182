#pragma once

#include "ZelUtil/WinTypes.h"

#include <bit>
#include <cstdint>

/// A colour of four fractions. They are meant to lie within 0.0 to 1.0, but are never clamped.
///
/// - Byte to fraction: byte * k, rounded once to float, where k is the float nearest to 1/255 (0x3B808081).
/// - Fraction to byte: fraction * 255.0, truncated towards zero, not rounded: 0.5 gives 127.
///
/// Every byte survives conversion to a fraction and back. For a fraction outside 0.0 to 1.0, the byte is the
/// low eight bits of the truncated product: 1.5 gives 126, -0.1 gives 231. Infinities and NaN give 0.
/// Converting from a form without alpha sets alpha to 1.0; converting to one drops alpha.
///
/// Four plain `int` arguments are ambiguous between bytes and fractions: write the type, as in
/// RGBColor(1.0F, 0.5F, 0.0F, 1.0F), or convert to `unsigned char`. No operation fails, allocates or throws.
struct RGBColor
{
    float red = 0.0F;
    float green = 0.0F;
    float blue = 0.0F;
    float alpha = 1.0F;

    /// Opaque black.
    RGBColor() = default;

    RGBColor(float redPart, float greenPart, float bluePart, float alphaPart)
        : red(redPart), green(greenPart), blue(bluePart), alpha(alphaPart)
    {
    }

    RGBColor(unsigned char redPart, unsigned char greenPart, unsigned char bluePart, unsigned char alphaPart)
        : red(ToFraction(redPart)), green(ToFraction(greenPart)), blue(ToFraction(bluePart)),
          alpha(ToFraction(alphaPart))
    {
    }

    /// Ignores the reserved byte.
    RGBColor(const tagRGBQUAD& quad)
        : red(ToFraction(quad.rgbRed)), green(ToFraction(quad.rgbGreen)), blue(ToFraction(quad.rgbBlue))
    {
    }

    /// Converts a colour reference, 0x00BBGGRR. Ignores its top byte.
    RGBColor(long colorRef)
        : red(ToFraction(ByteOf(colorRef, 0))), green(ToFraction(ByteOf(colorRef, 8))),
          blue(ToFraction(ByteOf(colorRef, 16)))
    {
    }

    RGBColor(const RGBColor&) = default;

    const RGBColor& operator=(const RGBColor& other)
    {
        red = other.red;
        green = other.green;
        blue = other.blue;
        alpha = other.alpha;
        return *this;
    }

    const RGBColor& operator=(const tagRGBQUAD& quad) { return *this = RGBColor(quad); }
    const RGBColor& operator=(long colorRef) { return *this = RGBColor(colorRef); }

    /// Sets the reserved byte to 0.
    operator tagRGBQUAD() const { return {blueByte(), greenByte(), redByte(), 0}; }

    /// Gives a colour reference, 0x00BBGGRR.
    operator long() const { return redByte() + greenByte() * 0x100L + blueByte() * 0x10000L; }

    /// Compares all four fractions exactly. NaN does not equal itself.
    bool operator==(const RGBColor& other) const
    {
        return red == other.red && green == other.green && blue == other.blue && alpha == other.alpha;
    }

    unsigned char redByte() const { return ToByte(red); }
    unsigned char greenByte() const { return ToByte(green); }
    unsigned char blueByte() const { return ToByte(blue); }
    unsigned char alphaByte() const { return ToByte(alpha); }

private:
    static unsigned char ByteOf(long colorRef, int shift)
    {
        return static_cast<unsigned char>(static_cast<unsigned long>(colorRef) >> shift & 0xFF);
    }

    static float ToFraction(unsigned char byte)
    {
        return static_cast<float>(byte) * std::bit_cast<float>(0x3B808081U);
    }

    static unsigned char ToByte(float fraction)
    {
        // The product is exact: 24 bits times 8 bits fit the 53 bits of a double. From 2^62 on it is a
        // multiple of 256, so its low byte is 0.
        const double product = fraction * 255.0;
        if (!(product > -0x1p62 && product < 0x1p62))
            return 0;
        return static_cast<unsigned char>(static_cast<std::int64_t>(product) & 0xFF);
    }
};
