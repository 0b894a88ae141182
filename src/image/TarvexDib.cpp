#include "ZelUtil/TarvexDib.h"

#include "image/BmpHeader.h"
#include "kernels/Kernels.h"
#include "system/Platform.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <new>

namespace
{

using Block = std::unique_ptr<unsigned char[]>;
using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// What a failed copy reports. The two lines tell which of its blocks was refused.
constexpr const char* kSourceFile = ".\\src\\TarvexDib";
constexpr int kHeaderBlockLine = 64;
constexpr int kPixelArrayLine = 80;

// The bytes are not initialised. Null where memory runs out.
Block Allocate(std::size_t bytes)
{
    try
    {
        return Block(new unsigned char[bytes]);
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

Block Allocate(std::int64_t bytes)
{
    return Allocate(static_cast<std::size_t>(bytes));
}

MemoryError CopyError(int line)
{
    return MemoryError("Copy Constructor CTarvexDib", "Couldn't allocate memory", kSourceFile, line);
}

// Reads exactly `bytes` bytes. Null where the stream has fewer or memory runs out. The block grows with what
// has been read, so that a file that only claims to be large costs no more than it holds.
Block ReadExactly(std::FILE* stream, std::size_t bytes)
{
    constexpr std::size_t kFirstPart = 64 * 1024;

    std::size_t capacity = std::min(bytes, kFirstPart);
    std::size_t filled = 0;
    Block block = Allocate(capacity);
    while (block != nullptr)
    {
        filled += std::fread(block.get() + filled, 1, capacity - filled, stream);
        if (filled < capacity)
            return nullptr;
        if (filled == bytes)
            return block;

        capacity = std::min(bytes, 2 * capacity);
        Block larger = Allocate(capacity);
        if (larger != nullptr)
            std::memcpy(larger.get(), block.get(), filled);
        block = std::move(larger);
    }
    return nullptr;
}

// Rows begin with `usedBytes` of pixels.
void ClearPadding(unsigned char* bits, std::int64_t rowBytes, std::int64_t usedBytes, int height)
{
    if (rowBytes == usedBytes)
        return;
    for (int row = 0; row < height; ++row, bits += rowBytes)
        std::memset(bits + usedBytes, 0, static_cast<std::size_t>(rowBytes - usedBytes));
}

} // namespace

CTarvexDib::CTarvexDib() = default;

CTarvexDib::CTarvexDib(const CTarvexDib& src) : m_interpolMethod(src.m_interpolMethod)
{
    if (src.m_header == nullptr)
        return;

    Block header = Allocate(std::int64_t{src.m_headerBytes});
    if (header == nullptr)
        throw CopyError(kHeaderBlockLine);
    Block bits = Allocate(std::int64_t{src.m_imageSize});
    if (bits == nullptr)
    {
        header.reset(); // the error's texts need memory
        throw CopyError(kPixelArrayLine);
    }
    HoldCopy(src, header.release(), bits.release());
}

CTarvexDib& CTarvexDib::operator=(const CTarvexDib& src)
{
    if (&src == this)
        return *this;

    Empty();
    if (src.m_imageSize == 0)
        return *this;

    Block header = Allocate(std::int64_t{src.m_headerBytes});
    if (header == nullptr)
        return *this;
    Block bits = Allocate(std::int64_t{src.m_imageSize});
    if (bits == nullptr)
        return *this;
    HoldCopy(src, header.release(), bits.release());
    m_interpolMethod = src.m_interpolMethod;
    return *this;
}

CTarvexDib::~CTarvexDib()
{
    Empty();
}

void CTarvexDib::Empty()
{
    delete[] m_bits;
    m_bits = nullptr;
    HoldHeader(nullptr, 0);
    m_width = 0;
    m_height = 0;
    m_scanLineBytes = 0;
    m_imageSize = 0;
    m_numColors = 0;
}

bool CTarvexDib::Create(int width, int height, int bitCount)
{
    Empty();
    if (bitCount != 8 && bitCount != 24 && bitCount != 32)
        return false;
    const int numColors = GetNumColors(bitCount);
    if (!zel::IsSupported(width, height, bitCount, numColors))
        return false;

    const std::int64_t headerBytes = zel::HeaderBlockBytes(numColors);
    Block block = Allocate(headerBytes);
    if (block == nullptr)
        return false;
    std::memset(block.get(), 0, static_cast<std::size_t>(headerBytes));
    HoldHeader(block.release(), static_cast<int>(headerBytes));
    *m_header = zel::MakeInfoHeader(width, height, bitCount, numColors);
    m_numColors = numColors;
    SetMetrics();

    if (!AllocatePixels())
        return false;
    if (bitCount == 32)
        std::memset(m_bits, 255, static_cast<std::size_t>(m_imageSize));
    else
        ClearPadding(m_bits, m_scanLineBytes, m_scanLineBytes - Padding(), m_height);
    return true;
}

bool CTarvexDib::SetColorTable(const tagRGBQUAD* const colors, int count)
{
    if (m_header == nullptr || BitCount() > 8 || count < 0 || count > GetNumColors(BitCount()))
        return false;
    if (colors == nullptr && count > 0)
        return false;
    return ReplaceTable(colors, count);
}

tagRGBQUAD* CTarvexDib::GetColorTable() const
{
    if (m_info == nullptr)
        return nullptr;
    return reinterpret_cast<tagRGBQUAD*>(reinterpret_cast<unsigned char*>(m_info) + zel::kInfoHeaderBytes);
}

void CTarvexDib::CopyColorsFromDib(const CTarvexDib& src)
{
    if (m_header == nullptr || &src == this)
        return;

    const int count = src.m_numColors;
    if (count > TableEntries())
    {
        ReplaceTable(src.GetColorTable(), count);
        return;
    }
    if (!zel::IsSupported(m_width, m_height, BitCount(), count))
        return;
    if (count > 0)
        std::memcpy(GetColorTable(), src.GetColorTable(),
                    static_cast<std::size_t>(count) * sizeof(tagRGBQUAD));
    SetColorCount(count);
}

bool CTarvexDib::Load(unsigned char* const buffer, int length)
{
    // The first fields decide before the length does, so they alone must be there.
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
    Block block = Allocate(headerBytes);
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

bool CTarvexDib::ChangeToTrueColor(bool withAlpha)
{
    if (m_header == nullptr)
        return false;
    const int oldBits = BitCount();
    const int newBits = withAlpha ? 32 : 24;
    if (oldBits >= newBits)
        return true;
    if (!zel::IsSupported(m_width, m_height, newBits, 0))
        return false;

    const int step = newBits / 8;
    const std::int64_t rowBytes = zel::RowBytes(m_width, newBits);
    const std::int64_t imageBytes = rowBytes * m_height;
    Block bits = Allocate(imageBytes);
    if (bits == nullptr)
        return false;
    ClearPadding(bits.get(), rowBytes, std::int64_t{step} * m_width, m_height);

    std::uint32_t pixels[256] = {};
    const int tableEntries = std::min(GetNumColors(oldBits), TableEntries());
    std::memcpy(pixels, GetColorTable(), static_cast<std::size_t>(tableEntries) * sizeof(tagRGBQUAD));
    for (std::uint32_t& pixel : pixels)
        pixel |= 0xFF000000;

    const zel::KernelTable& kernels = zel::ActiveKernels();
    unsigned char* to = bits.get();
    for (int row = 0; row < m_height && rowBytes > 0; ++row, to += rowBytes)
    {
        const unsigned char* from = GetScanLine(row);
        if (oldBits <= 8)
            zel::PaletteToTrueColorRow(to, step, from, oldBits, pixels, m_width);
        else if (oldBits == 16)
            zel::Bgr555ToTrueColorRow(to, step, from, m_width);
        else
            kernels.bgr24ToBgra32Row(to, from, m_width);
    }

    delete[] m_bits;
    m_bits = bits.release();
    m_numColors = 0;
    m_header->biClrUsed = 0;
    m_header->biBitCount = static_cast<std::uint16_t>(newBits);
    m_header->biSizeImage = static_cast<std::uint32_t>(imageBytes);
    SetMetrics();
    return true;
}

void CTarvexDib::SetMetrics()
{
    m_width = m_header->biWidth;
    m_height = m_header->biHeight;
    m_scanLineBytes = static_cast<int>(zel::RowBytes(m_width, m_header->biBitCount));
    m_pixelSize = m_header->biBitCount / 8;
    m_imageSize = m_scanLineBytes * m_height;
}

const int CTarvexDib::GetNumColors(int bitCount) const
{
    return zel::FullTableSize(bitCount);
}

// Takes ownership of the block, which replaces the one before it. Metrics and colour count are the caller's.
void CTarvexDib::HoldHeader(unsigned char* block, int bytes)
{
    delete[] reinterpret_cast<unsigned char*>(m_info);
    m_info = reinterpret_cast<BITMAPINFO*>(block);
    m_header = reinterpret_cast<BITMAPINFOHEADER*>(block);
    m_headerBytes = bytes;
}

// The pixel array for a header that is in place, not initialised. False, with the image empty, where memory
// runs out.
bool CTarvexDib::AllocatePixels()
{
    m_bits = Allocate(std::int64_t{m_imageSize}).release();
    if (m_bits == nullptr)
        Empty();
    return m_bits != nullptr;
}

// Fills the two blocks with the source's bytes and takes ownership of them. This image is empty before.
void CTarvexDib::HoldCopy(const CTarvexDib& src, unsigned char* header, unsigned char* bits)
{
    std::memcpy(header, src.m_info, static_cast<std::size_t>(src.m_headerBytes));
    std::memcpy(bits, src.m_bits, static_cast<std::size_t>(src.m_imageSize));
    HoldHeader(header, src.m_headerBytes);
    m_bits = bits;
    m_numColors = src.m_numColors;
    SetMetrics();
}

// Colours that the header block has room for, counted or not.
int CTarvexDib::TableEntries() const
{
    return (m_headerBytes - zel::kInfoHeaderBytes) / zel::kColorBytes;
}

void CTarvexDib::SetColorCount(int count)
{
    m_numColors = count;
    if (count > 0)
        m_header->biClrUsed = static_cast<std::uint32_t>(count);
}

// Gives the image a header block with just this table. Colours of its own table that lie beyond its block are
// black. False, unchanged, where memory runs out or the table exceeds the limits.
bool CTarvexDib::ReplaceTable(const tagRGBQUAD* colors, int count)
{
    if (!zel::IsSupported(m_width, m_height, BitCount(), count))
        return false;
    const std::int64_t headerBytes = zel::HeaderBlockBytes(count);
    Block block = Allocate(headerBytes);
    if (block == nullptr)
        return false;

    std::int64_t readable = count;
    const tagRGBQUAD* ownTable = GetColorTable();
    const tagRGBQUAD* ownEnd = ownTable + TableEntries();
    if (colors == ownTable || (std::greater<>()(colors, ownTable) && std::less<>()(colors, ownEnd)))
        readable = std::min<std::int64_t>(count, ownEnd - colors);

    std::memset(block.get(), 0, static_cast<std::size_t>(headerBytes));
    std::memcpy(block.get(), m_info, zel::kInfoHeaderBytes);
    if (readable > 0)
        std::memcpy(block.get() + zel::kInfoHeaderBytes, colors,
                    static_cast<std::size_t>(readable) * sizeof(tagRGBQUAD));
    HoldHeader(block.release(), static_cast<int>(headerBytes));
    SetColorCount(count);
    return true;
}

// Fills the empty image. Where it gives false the caller empties it again.
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

    // A file without any pixel is refused before its claim is paid for.
    const int firstByte = std::fgetc(stream);
    if (firstByte == EOF)
        return false;
    const auto imageBytes = static_cast<std::size_t>(m_imageSize);
    Block bits = Allocate(imageBytes);
    if (bits == nullptr)
        return false;
    bits[0] = static_cast<unsigned char>(firstByte);
    const std::size_t filled = 1 + std::fread(bits.get() + 1, 1, imageBytes - 1, stream);
    std::memset(bits.get() + filled, 0, imageBytes - filled);
    m_bits = bits.release();
    return true;
}
