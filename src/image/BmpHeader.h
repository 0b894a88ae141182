#pragma once

#include "ZelUtil/WinTypes.h"

#include <cstdint>
#include <optional>

/// The sizes and headers of the published BMP format.
namespace zel
{

inline constexpr int kFileHeaderBytes = 14;
inline constexpr int kInfoHeaderBytes = 40;
inline constexpr int kColorBytes = 4;

/// Returns the number of colours that an index of this depth can select: 2, 16 or 256 for 1, 4 or 8 bits,
/// else 0.
int FullTableSize(int bitCount);

/// Returns the bytes of a row with its padding, for a width of 0 or more.
std::int64_t RowBytes(std::int64_t width, int bitCount);

/// Returns the bytes of a header block with its colour table.
std::int64_t HeaderBlockBytes(std::int64_t numColors);

/// Tells whether the library handles images of this shape: the depth is 1, 4, 8, 16, 24 or 32 bits, no size
/// is negative, and header, table and pixels together have at most 2^31 - 1 bytes.
bool IsSupported(std::int64_t width, std::int64_t height, int bitCount, std::int64_t numColors);

/// Returns the info header of an uncompressed image.
BITMAPINFOHEADER MakeInfoHeader(int width, int height, int bitCount, int numColors);

/// Returns the offset of the pixels in the file (bfOffBits), or nothing where this is not a BMP file.
std::optional<std::uint32_t> ParseFileHeader(const unsigned char (&bytes)[kFileHeaderBytes]);

/// Writes the header of a file with `headerBytes` bytes of header block and then `imageBytes` bytes of
/// pixels.
void WriteFileHeader(unsigned char (&bytes)[kFileHeaderBytes], std::uint32_t headerBytes,
                     std::uint32_t imageBytes);

} // namespace zel
