#pragma once

#include "ZelUtil/WinTypes.h"

#include <cstdint>
#include <optional>

/// Sizes and bytes of the published BMP format, without files and pixels.
namespace zel
{

inline constexpr int kFileHeaderBytes = 14;
inline constexpr int kInfoHeaderBytes = 40;
inline constexpr int kColorBytes = 4;

/// Colours that pixels of this depth can name: 2, 16 or 256 for 1, 4 or 8 bits, else 0.
int FullTableSize(int bitCount);

/// Bytes of a row with its padding, for a width of 0 or more.
std::int64_t RowBytes(std::int64_t width, int bitCount);

/// Bytes of a header block with its colour table.
std::int64_t HeaderBlockBytes(std::int64_t numColors);

/// Whether an image of this shape is one that the library handles: a depth of 1, 4, 8, 16, 24 or 32 bits, no
/// negative size, and header, table and pixels within the range of a signed 32-bit int together.
bool IsSupported(std::int64_t width, std::int64_t height, int bitCount, std::int64_t numColors);

/// The header of an uncompressed image.
BITMAPINFOHEADER MakeInfoHeader(int width, int height, int bitCount, int numColors);

/// The offset of the pixels in the file (bfOffBits); nothing where the bytes are not a BMP file's.
std::optional<std::uint32_t> ParseFileHeader(const unsigned char (&bytes)[kFileHeaderBytes]);

/// The header of a file that holds `headerBytes` of header block and `imageBytes` of pixels behind it.
void WriteFileHeader(unsigned char (&bytes)[kFileHeaderBytes], std::uint32_t headerBytes,
                     std::uint32_t imageBytes);

} // namespace zel
