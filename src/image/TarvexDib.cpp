#include "ZelUtil/TarvexDib.h"

#include "image/Block.h"
#include "image/BmpHeader.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>

using zel::Allocate;
using zel::Block;

namespace
{

// What a failed copy reports. The two line numbers are fixed, not lines of this file: they tell which of the
// two blocks was refused.
constexpr const char* kSourceFile = ".\\src\\TarvexDib";
constexpr int kHeaderBlockLine = 64;
constexpr int kPixelArrayLine = 80;

MemoryError CopyError(int line)
{
    return MemoryError("Copy Constructor CTarvexDib", "Couldn't allocate memory", kSourceFile, line);
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
        zel::ClearPadding(m_bits, m_scanLineBytes, m_scanLineBytes - Padding(), m_height);
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

// Replaces the header block and takes ownership of the new one. The caller sets metrics and colour count.
void CTarvexDib::HoldHeader(unsigned char* block, int bytes)
{
    delete[] reinterpret_cast<unsigned char*>(m_info);
    m_info = reinterpret_cast<BITMAPINFO*>(block);
    m_header = reinterpret_cast<BITMAPINFOHEADER*>(block);
    m_headerBytes = bytes;
}

// Allocates the pixel array for the header that is in place; it is not initialised. False, with the image
// empty, where memory runs out.
bool CTarvexDib::AllocatePixels()
{
    m_bits = Allocate(std::int64_t{m_imageSize}).release();
    if (m_bits == nullptr)
        Empty();
    return m_bits != nullptr;
}

// Fills the two blocks with the source's bytes and takes ownership of them. This image has to be empty.
void CTarvexDib::HoldCopy(const CTarvexDib& src, unsigned char* header, unsigned char* bits)
{
    std::memcpy(header, src.m_info, static_cast<std::size_t>(src.m_headerBytes));
    std::memcpy(bits, src.m_bits, static_cast<std::size_t>(src.m_imageSize));
    HoldHeader(header, src.m_headerBytes);
    m_bits = bits;
    m_numColors = src.m_numColors;
    SetMetrics();
}

// The number of colours that the header block has room for, whatever the colour count.
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

// Replaces the header block by one with exactly this table. Where `colors` is the image's own table, entries
// beyond its block become black. False, unchanged, where memory runs out or the table exceeds the limits.
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
