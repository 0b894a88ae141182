// BMP files and packed forms against a plain reading of their bytes; what is saved loads again, and saves to
// the same bytes.

#include "Properties.h"

#include "ZelUtil/TarvexDib.h"

#include <cstring>
#include <optional>

using namespace test;

namespace
{

constexpr double kMaxBytes = 2147483647.0;

struct Picture
{
    Bytes header; // 40 bytes
    Bytes table, pixels;
    int width, height, bits;
};

std::uint32_t Number(const Bytes& bytes, std::size_t at, std::size_t count = 4)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i)
        value |= std::uint32_t{bytes[at + i]} << (8 * i);
    return value;
}

Bytes Part(const Bytes& bytes, std::size_t from, std::size_t count)
{
    Bytes part;
    for (std::size_t i = from; i < from + count; ++i)
        part.push_back(i < bytes.size() ? bytes[i] : 0);
    return part;
}

// What the header that starts at `at` describes, without its pixels; `colors` of its table where that is not
// stated by the header.
struct Claim
{
    Claim(const Bytes& bytes, std::size_t at, bool fullTables)
    {
        const std::uint32_t unsignedWidth = Number(bytes, at + 4), unsignedHeight = Number(bytes, at + 8);
        bits = static_cast<int>(Number(bytes, at + 14, 2));
        colors = Number(bytes, at + 32);
        if (fullTables)
            colors = bits > 8 ? 0 : colors == 0 ? 1U << bits : colors;
        rowBytes = (std::int64_t{unsignedWidth} * bits + 31) / 32 * 4;
        const double imageBytes = static_cast<double>(rowBytes) * unsignedHeight;
        const bool isDepth = bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
        isSupported = isDepth && unsignedWidth <= kMaxBytes && unsignedHeight <= kMaxBytes &&
                      static_cast<double>(rowBytes) <= kMaxBytes &&
                      40.0 + 4.0 * colors + imageBytes <= kMaxBytes;
        width = static_cast<int>(unsignedWidth);
        height = static_cast<int>(unsignedHeight);
        length = 40.0 + 4.0 * colors + imageBytes;
    }

    int width, height, bits;
    std::uint32_t colors;
    std::int64_t rowBytes;
    double length;
    bool isSupported;
};

Picture Taken(const Bytes& bytes, std::size_t at, const Claim& claim, std::size_t pixelsAt)
{
    const auto imageBytes = static_cast<std::size_t>(claim.rowBytes) * static_cast<std::size_t>(claim.height);
    return {Part(bytes, at, 40),
            Part(bytes, at + 40, std::size_t{4} * claim.colors),
            Part(bytes, pixelsAt, imageBytes),
            claim.width,
            claim.height,
            claim.bits};
}

std::optional<Picture> ReadFile(const Bytes& file)
{
    if (file.size() < 54 || file[0] != 'B' || file[1] != 'M' || Number(file, 14) != 40 ||
        Number(file, 30) != 0)
        return {};
    const std::uint32_t pixelsAt = Number(file, 10);
    const Claim claim(file, 14, false);
    if (!claim.isSupported || claim.width == 0 || claim.height == 0 || pixelsAt >= file.size() ||
        54.0 + 4.0 * claim.colors > pixelsAt)
        return {};
    return Taken(file, 14, claim, pixelsAt);
}

std::optional<Picture> ReadPacked(const Bytes& packed)
{
    if (packed.size() < 40 || Number(packed, 0) != 40 || Number(packed, 16) != 0)
        return {};
    const Claim claim(packed, 0, true);
    if (!claim.isSupported || claim.length > static_cast<double>(packed.size()))
        return {};
    return Taken(packed, 0, claim, 40 + std::size_t{4} * claim.colors);
}

void RequireSame(const CTarvexDib& dib, const Picture& picture, const char* how)
{
    const std::string what = std::string(" from ") + how;
    const auto rowBytes = (std::int64_t{picture.width} * picture.bits + 31) / 32 * 4;
    Require(dib.Width() == picture.width && dib.Height() == picture.height && dib.BitCount() == picture.bits,
            "size and depth" + what);
    Require(dib.BytesPerScanLine() == rowBytes && dib.PixelSize() == picture.bits / 8, "layout" + what);
    Bytes packed = picture.header;
    packed.insert(packed.end(), picture.table.begin(), picture.table.end());
    packed.insert(packed.end(), picture.pixels.begin(), picture.pixels.end());
    Require(test::Packed(dib) == packed, "header, colours and pixels" + what);
}

bool IsEmpty(const CTarvexDib& dib)
{
    return dib.BitCount() == 0 && dib.Width() == 0 && dib.Height() == 0 && dib.GetColorTable() == nullptr &&
           dib.GetScanLine(0) == nullptr && dib.GetDibLength() == 40;
}

// From the path, and from a stream that has something before the file.
CTarvexDib CheckFile(const Bytes& file)
{
    const std::optional<Picture> picture = ReadFile(file);
    CTarvexDib dib, fromStream;
    dib.Create(1, 1, 24);
    fromStream.Create(1, 1, 8);
    Require(dib.Load(Scratch(file).c_str()) == picture.has_value(), "a file loads where it is one");

    Bytes longer = {'B', 'M', 0};
    longer.insert(longer.end(), file.begin(), file.end());
    const test::File stream(std::fopen(Scratch(longer).c_str(), "rb"), std::fclose);
    std::fseek(stream.get(), 3, SEEK_SET);
    Require(fromStream.Load(stream.get()) == picture.has_value(), "a stream loads as its file");
    if (picture.has_value())
    {
        RequireSame(dib, *picture, "a path");
        RequireSame(fromStream, *picture, "a stream");
    }
    else
        Require(IsEmpty(dib) && IsEmpty(fromStream), "nothing is left of what does not load");
    return dib;
}

CTarvexDib CheckPacked(Bytes packed)
{
    const std::optional<Picture> picture = ReadPacked(packed);
    CTarvexDib dib = test::FromPacked(test::RandomPacked(2, 2, 4, 3, 3));
    const Bytes before = test::Packed(dib);
    packed.shrink_to_fit();
    Require(dib.Load(packed.data(), static_cast<int>(packed.size())) == picture.has_value(),
            "a packed form loads where it is one");
    if (picture.has_value())
    {
        RequireSame(dib, *picture, "memory");
        return dib;
    }
    const bool isCompressed = packed.size() >= 40 && Number(packed, 0) == 40 && Number(packed, 16) != 0;
    const bool isShort = packed.size() < 40;
    Require((IsEmpty(dib) && (isCompressed || isShort)) || (test::Packed(dib) == before && !isCompressed),
            "only what is compressed empties the image");
    return CTarvexDib();
}

void CheckSave(const CTarvexDib& dib)
{
    if (dib.BitCount() == 0)
    {
        unsigned char byte = 0;
        Require(!dib.Save(&byte, 1) && !dib.Save(Scratch({}).c_str()), "nothing is saved of nothing");
        return;
    }
    const int length = dib.GetDibLength();
    Bytes packed(static_cast<std::size_t>(length), 0x5A);
    Require(!dib.Save(packed.data(), length - 1) && packed == Bytes(packed.size(), 0x5A),
            "no room, nothing written");
    Require(dib.Save(packed.data(), length), "saves to memory");
    const std::string path = Scratch({});
    Require(dib.Save(path.c_str()), "saves to a path");
    const Bytes file = test::ReadFile(path);
    const auto pixelsAt = static_cast<std::uint32_t>(file.size() - test::PixelBytes(dib).size());
    Require(file.size() == packed.size() + 14 &&
                std::equal(packed.begin(), packed.end(), file.begin() + 14) && file[0] == 'B' &&
                file[1] == 'M' && Number(file, 2) == file.size() && Number(file, 6) == 0 &&
                Number(file, 10) == pixelsAt,
            "a file is its header and the packed form");
    const test::File stream(std::fopen(path.c_str(), "w+b"), std::fclose);
    Require(dib.Save(stream.get()) && std::fflush(stream.get()) == 0 && test::ReadFile(path) == file,
            "a stream is saved as a file is");

    // The colour count decides whether it comes back.
    const std::uint32_t colors = (pixelsAt - 54) / 4, stated = Number(packed, 32);
    const bool hasPixels = file.size() > pixelsAt;
    const CTarvexDib again = CheckFile(file), unpacked = CheckPacked(packed);
    if (stated == colors && hasPixels)
        Require(test::Packed(again) == packed, "what is saved loads again");
    if (stated > colors)
        Require(again.BitCount() == 0, "a file that states more colours than it has does not load");
    const std::uint32_t expected = dib.BitCount() > 8 ? 0 : stated == 0 ? 1U << dib.BitCount() : stated;
    if (colors == expected)
        Require(test::Packed(unpacked) == packed, "what is packed loads again");
}

} // namespace

void property::Bmp(Input input)
{
    const Bytes file = Affordable(input.Rest());
    CheckSave(CheckFile(file));
    CheckSave(CheckPacked(Bytes(
        file.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(file.size(), 14)), file.end())));
}
