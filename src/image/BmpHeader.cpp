#include "image/BmpHeader.h"

#include <limits>

namespace zel
{

namespace
{

constexpr std::int64_t kMaxBytes = std::numeric_limits<std::int32_t>::max();

void WriteLittleEndian(unsigned char* bytes, std::uint32_t value)
{
    for (int i = 0; i < 4; ++i)
        bytes[i] = static_cast<unsigned char>(value >> (8 * i));
}

} // namespace

int FullTableSize(int bitCount)
{
    return bitCount == 1 || bitCount == 4 || bitCount == 8 ? 1 << bitCount : 0;
}

std::int64_t RowBytes(std::int64_t width, int bitCount)
{
    return (width * bitCount + 31) / 32 * 4;
}

std::int64_t HeaderBlockBytes(std::int64_t numColors)
{
    return kInfoHeaderBytes + kColorBytes * numColors;
}

bool IsSupported(std::int64_t width, std::int64_t height, int bitCount, std::int64_t numColors)
{
    if (FullTableSize(bitCount) == 0 && bitCount != 16 && bitCount != 24 && bitCount != 32)
        return false;
    if (width < 0 || height < 0 || numColors < 0)
        return false;

    const std::int64_t rowBytes = RowBytes(width, bitCount);
    const std::int64_t headerBytes = HeaderBlockBytes(numColors);
    return rowBytes <= kMaxBytes && headerBytes <= kMaxBytes && rowBytes * height <= kMaxBytes - headerBytes;
}

BITMAPINFOHEADER MakeInfoHeader(int width, int height, int bitCount, int numColors)
{
    BITMAPINFOHEADER header = {};
    header.biSize = kInfoHeaderBytes;
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = 1;
    header.biBitCount = static_cast<std::uint16_t>(bitCount);
    header.biClrUsed = static_cast<std::uint32_t>(numColors);
    return header;
}

std::optional<std::uint32_t> ParseFileHeader(const unsigned char (&bytes)[kFileHeaderBytes])
{
    if (bytes[0] != 'B' || bytes[1] != 'M')
        return std::nullopt;

    std::uint32_t pixelOffset = 0;
    for (int i = 0; i < 4; ++i)
        pixelOffset |= static_cast<std::uint32_t>(bytes[10 + i]) << (8 * i);
    return pixelOffset;
}

void WriteFileHeader(unsigned char (&bytes)[kFileHeaderBytes], std::uint32_t headerBytes,
                     std::uint32_t imageBytes)
{
    bytes[0] = 'B';
    bytes[1] = 'M';
    WriteLittleEndian(bytes + 2, kFileHeaderBytes + headerBytes + imageBytes);
    WriteLittleEndian(bytes + 6, 0);
    WriteLittleEndian(bytes + 10, kFileHeaderBytes + headerBytes);
}

} // namespace zel
