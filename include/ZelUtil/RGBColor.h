#pragma once

#include "ZelUtil/WinTypes.h"

#include <bit>
#include <cstdint>

/// A colour of four fractions, meant to lie within 0.0 to 1.0; nothing confines them to it.
///
/// - byte to fraction: byte * k, rounded once to float, with k the float nearest to 1/255 (0x3B808081)
/// - fraction to byte: fraction * 255.0, truncated towards zero, never rounded: 0.5 gives 127
///
/// Every byte survives the way there and back. Outside 0.0 to 1.0 a byte is the low eight bits of the
/// truncated product, whatever its size (1.5 gives 126, -0.1 gives 231); what is not a finite number gives 0.
/// Forms without alpha give alpha 1.0 when they are read, and drop it when they are written.
///
/// Four plain `int` arguments fit bytes and fractions equally well and do not compile: write the type, as in
/// RGBColor(1.0F, 0.5F, 0.0F, 1.0F), or convert to `unsigned char`. Nothing here fails, allocates or throws.
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

    /// The reserved byte does not count.
    RGBColor(const tagRGBQUAD& quad)
        : red(ToFraction(quad.rgbRed)), green(ToFraction(quad.rgbGreen)), blue(ToFraction(quad.rgbBlue))
    {
    }

    /// A colour reference, 0x00BBGGRR; its top byte does not count.
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

    /// The reserved byte is 0.
    operator tagRGBQUAD() const { return {blueByte(), greenByte(), redByte(), 0}; }

    /// The top byte is 0.
    operator long() const { return redByte() + greenByte() * 0x100L + blueByte() * 0x10000L; }

    /// Exact comparison of all four; what is not a number equals nothing.
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
        // Exact: 24 bits times 8. From 2^62 on the product is a multiple of 256.
        const double product = fraction * 255.0;
        if (!(product > -0x1p62 && product < 0x1p62))
            return 0;
        return static_cast<unsigned char>(static_cast<std::int64_t>(product) & 0xFF);
    }
};
