#include "ZelUtil/TarvexDib.h"

#include "image/Block.h"
#include "image/BmpHeader.h"
#include "system/Platform.h"

#include <algorithm>
#include <cstddef>
#include <limits>

using zel::Block;
using zel::File;

namespace
{

// Reads exactly `bytes` bytes. Returns null if the stream has fewer or memory runs out. The block grows with
// the bytes that were read, so a file that claims to be large costs at most 64 KiB, or three times its real
// size.
Block ReadExactly(std::FILE* stream, std::size_t bytes)
{
    constexpr std::size_t kFirstPart = 64 * 1024;

    std::size_t capacity = std::min(bytes, kFirstPart);
    std::size_t filled = 0;
    Block block = zel::Allocate(capacity);
    while (block != nullptr)
    {
        filled += std::fread(block.get() + filled, 1, capacity - filled, stream);
        if (filled < capacity)
            return nullptr;
        if (filled == bytes)
            return block;

        capacity = std::min(bytes, 2 * capacity);
        Block larger = zel::Allocate(capacity);
        if (larger != nullptr)
            std::memcpy(larger.get(), block.get(), filled);
        block = std::move(larger);
    }
    return nullptr;
}

} // namespace

bool CTarvexDib::Load(unsigned char* const buffer, int length)
{
    // The fields up to biCompression decide before the length does, so only they have to be there.
    constexpr int kDecidingBytes = offsetof(BITMAPINFOHEADER, biCompression) + 4;
    if (buffer == nullptr || length < kDecidingBytes)
        return false;

    BITMAPINFOHEADER header = {};
    std::memcpy(&header, buffer, static_cast<std::size_t>(std::min(length, zel::kInfoHeaderBytes)));
    if (header.biSize != zel::kInfoHeaderBytes)
        return false;
    if (header.biCompression != 0)
    {
        Empty();
        return false;
    }

    std::int64_t numColors = 0;
    if (header.biBitCount <= 8)
        numColors = header.biClrUsed != 0 ? std::int64_t{header.biClrUsed} : GetNumColors(header.biBitCount);
    if (!zel::IsSupported(header.biWidth, header.biHeight, header.biBitCount, numColors))
        return false;
    const std::int64_t headerBytes = zel::HeaderBlockBytes(numColors);
    if (length < headerBytes + zel::RowBytes(header.biWidth, header.biBitCount) * header.biHeight)
        return false;

    Empty();
    Block block = zel::Allocate(headerBytes);
    if (block == nullptr)
        return false;
    std::memcpy(block.get(), buffer, static_cast<std::size_t>(headerBytes));
    HoldHeader(block.release(), static_cast<int>(headerBytes));
    m_numColors = static_cast<int>(numColors);
    SetMetrics();

    if (!AllocatePixels())
        return false;
    std::memcpy(m_bits, buffer + headerBytes, static_cast<std::size_t>(m_imageSize));
    return true;
}

bool CTarvexDib::Load(std::FILE* stream)
{
    Empty();
    if (stream != nullptr && ReadStream(stream))
        return true;
    Empty();
    return false;
}

bool CTarvexDib::Load(const char* const path)
{
    if (path == nullptr)
        return false;
    const File file(zel::OpenFile(path, "rb"), std::fclose);
    return file != nullptr && Load(file.get());
}

bool CTarvexDib::Save(unsigned char* buffer, int length) const
{
    if (m_header == nullptr || buffer == nullptr || length < GetDibLength())
        return false;

    const std::int64_t headerBytes = zel::HeaderBlockBytes(m_numColors);
    std::memcpy(buffer, m_info, static_cast<std::size_t>(headerBytes));
    std::memcpy(buffer + headerBytes, m_bits, static_cast<std::size_t>(m_imageSize));
    return true;
}

bool CTarvexDib::Save(std::FILE* stream) const
{
    if (m_header == nullptr || stream == nullptr)
        return false;

    const auto headerBytes = static_cast<std::size_t>(zel::HeaderBlockBytes(m_numColors));
    const auto imageBytes = static_cast<std::size_t>(m_imageSize);
    unsigned char fileHeader[zel::kFileHeaderBytes];
    zel::WriteFileHeader(fileHeader, static_cast<std::uint32_t>(headerBytes),
                         static_cast<std::uint32_t>(imageBytes));
    return std::fwrite(fileHeader, sizeof fileHeader, 1, stream) == 1 &&
           std::fwrite(m_info, 1, headerBytes, stream) == headerBytes &&
           std::fwrite(m_bits, 1, imageBytes, stream) == imageBytes;
}

bool CTarvexDib::Save(const char* const path) const
{
    if (m_header == nullptr || path == nullptr)
        return false;
    File file(zel::OpenFile(path, "wb"), std::fclose);
    if (file == nullptr)
        return false;

    const bool written = Save(file.get());
    return std::fclose(file.release()) == 0 && written;
}

// Fills the empty image. Where it returns false, the caller empties the image again.
bool CTarvexDib::ReadStream(std::FILE* stream)
{
    unsigned char fileHeader[zel::kFileHeaderBytes];
    if (std::fread(fileHeader, 1, sizeof fileHeader, stream) != sizeof fileHeader)
        return false;
    const auto pixelOffset = zel::ParseFileHeader(fileHeader);
    if (!pixelOffset.has_value() || *pixelOffset < zel::kFileHeaderBytes + zel::kInfoHeaderBytes)
        return false;
    const std::uint32_t headerBytes = *pixelOffset - zel::kFileHeaderBytes;
    if (headerBytes > static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max()))
        return false;

    Block block = ReadExactly(stream, headerBytes);
    if (block == nullptr)
        return false;
    BITMAPINFOHEADER header;
    std::memcpy(&header, block.get(), sizeof header);
    if (header.biSize != zel::kInfoHeaderBytes || header.biCompression != 0)
        return false;
    if (!zel::IsSupported(header.biWidth, header.biHeight, header.biBitCount, header.biClrUsed) ||
        zel::HeaderBlockBytes(header.biClrUsed) > headerBytes)
        return false;
    HoldHeader(block.release(), static_cast<int>(headerBytes));
    m_numColors = static_cast<int>(header.biClrUsed);
    SetMetrics();
    if (m_imageSize == 0)
        return false;

    // A file without any pixel byte is refused before memory for all that it claims is taken.
    const int firstByte = std::fgetc(stream);
    if (firstByte == EOF)
        return false;
    const auto imageBytes = static_cast<std::size_t>(m_imageSize);
    Block bits = zel::Allocate(imageBytes);
    if (bits == nullptr)
        return false;
    bits[0] = static_cast<unsigned char>(firstByte);
    const std::size_t filled = 1 + std::fread(bits.get() + 1, 1, imageBytes - 1, stream);
    std::memset(bits.get() + filled, 0, imageBytes - filled);
    m_bits = bits.release();
    return true;
}
