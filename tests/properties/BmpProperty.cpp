// BMP files and packed forms give what a plain reading of their bytes gives, from memory, streams and paths.
// What is saved has the same bytes in all three, and loads again.

#include "Properties.h"

#include <cmath>
#include <cstring>
#include <optional>

using namespace test;

namespace
{

constexpr double kMaxBytes = 2147483647.0;

// Returns header, colours and pixels, or nothing if the input must be refused. For a file, pixels start at
// `pixelsAt`, biClrUsed is the colour count, and missing pixel bytes are 0 if at least one exists.
std::optional<Bytes> ReadPlainly(Bytes packed, std::optional<double> pixelsAt)
{
    if (packed.size() < 40 || Number(packed, 0) != 40 || Number(packed, 16) != 0)
        return {};
    const double width = Number(packed, 4), height = Number(packed, 8),
                 size = static_cast<double>(packed.size());
    const std::uint32_t bits = Number(packed, 14, 2), clrUsed = Number(packed, 32);
    if (bits != 1 && bits != 4 && bits != 8 && bits != 16 && bits != 24 && bits != 32)
        return {};
    const bool isCounted = pixelsAt || (bits <= 8 && clrUsed != 0);
    const double colors = isCounted ? clrUsed : bits <= 8 ? std::exp2(bits) : 0;
    const double header = 40 + 4 * colors, rowBytes = std::floor((width * bits + 31) / 32) * 4;
    const double pixels = rowBytes * height, start = pixelsAt.value_or(header);
    if (std::max({width, height, rowBytes, header + pixels}) > kMaxBytes || start < header)
        return {};
    if (pixelsAt ? pixels == 0 || start >= size : start + pixels > size)
        return {};

    packed.resize(static_cast<std::size_t>(start + pixels));
    packed.erase(packed.begin() + static_cast<std::ptrdiff_t>(header),
                 packed.begin() + static_cast<std::ptrdiff_t>(start));
    return packed;
}

// One file for all inputs, open from the start, since making one for each takes most of the time on Windows.
File g_stream(std::tmpfile(), std::fclose);

// A stream that has these bytes next, after those of earlier inputs, and nothing after them.
std::FILE* StreamOf(const Bytes& bytes)
{
    if (std::ftell(g_stream.get()) > 1000000)
        g_stream.reset(std::tmpfile());
    std::fseek(g_stream.get(), 0, SEEK_END);
    const long start = std::ftell(g_stream.get());
    std::fwrite(bytes.data(), 1, bytes.size(), g_stream.get());
    std::fseek(g_stream.get(), start, SEEK_SET);
    return g_stream.get();
}

void CheckLoaded(bool isLoaded, const CTarvexDib& dib, const std::optional<Bytes>& expected)
{
    Require(isLoaded == expected.has_value() && Packed(dib) == expected.value_or(Bytes()),
            "only pictures load, and header, colours and pixels are those of the bytes");
    Require(isLoaded == (dib.GetScanLine(0) != nullptr || dib.GetColorTable() != nullptr),
            "what does not load leaves an empty image");
    if (isLoaded)
        Require(dib.PixelSize() == dib.BitCount() / 8 &&
                    dib.BytesPerScanLine() == (std::int64_t{dib.Width()} * dib.BitCount() + 31) / 32 * 4 &&
                    dib.Padding() == dib.BytesPerScanLine() - dib.Width() * dib.PixelSize(),
                "the layout is that of the depth");
}

CTarvexDib CheckFile(const Bytes& file)
{
    std::optional<Bytes> expected;
    if (file.size() >= 14 && file[0] == 'B' && file[1] == 'M' && Number(file, 10) >= 14)
        expected = ReadPlainly(Bytes(file.begin() + 14, file.end()), Number(file, 10) - 14.0);
    CTarvexDib dib = RandomPicture(1, 1, 24), fromPath(dib);
    const bool isLoaded = dib.Load(StreamOf(file));
    CheckLoaded(isLoaded, dib, expected);
    Require(!isLoaded || std::memcmp(dib.GetColorTable(), &file[54], Number(file, 10) - 54) == 0,
            "all colours of the file are there, whatever their count");
    if (file.size() % 8 == 0) // not each, as files are slow to open
        Require(fromPath.Load(Scratch(file).c_str()) == isLoaded && Packed(fromPath) == Packed(dib),
                "a path gives what a stream gives");
    return dib;
}

CTarvexDib CheckPacked(const Bytes& packed)
{
    const std::optional<Bytes> expected = ReadPlainly(packed, {});
    CTarvexDib dib = RandomPicture(2, 2, 4);
    const Bytes before = Packed(dib);
    const bool isLoaded = LoadPacked(dib, packed);
    if (isLoaded || (packed.size() >= 20 && Number(packed, 0) == 40 && Number(packed, 16) != 0))
        CheckLoaded(isLoaded, dib, expected);
    else
        Require(!expected.has_value() && Packed(dib) == before, "only what is compressed empties the image");
    return dib;
}

void CheckSave(const CTarvexDib& dib)
{
    Bytes packed(static_cast<std::size_t>(dib.GetDibLength()), 0x5A), file(packed.size() + 14);
    const Bytes untouched = packed;
    std::FILE* const stream = StreamOf({});
    const long start = std::ftell(stream);
    Require(!dib.Save(packed.data(), dib.GetDibLength() - 1) && packed == untouched,
            "nothing is saved without room");
    if (dib.BitCount() == 0)
        return Require(!dib.Save(packed.data(), 40) && !dib.Save(stream) && std::ftell(stream) == start,
                       "nothing is saved of an empty image");

    Require(dib.Save(packed.data(), dib.GetDibLength()), "memory with room takes the picture");
    const auto pixelsAt = static_cast<std::uint32_t>(file.size() - PixelBytes(dib).size());
    Bytes expected = FileAround(packed, 0);
    PutNumber(expected, 2, static_cast<std::uint32_t>(file.size()));
    PutNumber(expected, 6, 0);
    PutNumber(expected, 10, pixelsAt);
    Require(dib.Save(stream) && std::ftell(stream) == start + static_cast<long>(file.size()) &&
                std::fseek(stream, start, SEEK_SET) == 0 &&
                std::fread(file.data(), 1, file.size(), stream) == file.size() && file == expected,
            "a stream takes a file header and the packed form, and no more");
    if (file.size() % 8 == 0)
    {
        const std::string path = Scratch({1});
        Require(dib.Save(path.c_str()) && ReadFile(path) == expected, "a path takes the same bytes");
    }

    CheckFile(file); // whether it comes back depends on the colour count
    CheckPacked(packed);
}

// Cuts the pixels off a file that claims more than 64 KB of them, so that loading it is cheap. More than 2 GB
// have to be refused at once.
Bytes Affordable(Bytes file)
{
    const double bits =
        file.size() < 54 ? 0 : 1.0 * Number(file, 18) * Number(file, 22) * Number(file, 28, 2);
    if (bits > 8 * 65536 && bits <= 8 * kMaxBytes)
        file.resize(std::min<std::size_t>(file.size(), std::max(Number(file, 10), 54U)));
    return file;
}

// A file of a shape that the input asks for.
Bytes MakeFile(Input& input)
{
    constexpr int kDepths[] = {1, 4, 8, 16, 24, 32};
    const int bits = kDepths[input.Below(6)], full = bits <= 8 ? 1 << bits : 0;
    const int clrUsed = input.Below(3) == 0 ? 0 : input.Below(full + 2);
    const int table = input.Below(2) == 0 ? clrUsed : std::max(full - 2 + input.Below(4), 0);
    Bytes packed = BlankPacked(input.Below(36), input.Below(5), bits, clrUsed, table);
    const unsigned first = input.Byte(), step = input.Byte();
    for (std::size_t i = 40; i < packed.size(); ++i)
        packed[i] = static_cast<unsigned char>(first + i * step);
    return FileAround(packed, table);
}

} // namespace

// An input that starts as a BMP file does, with one of two letters at least, is taken as it is.
void property::Bmp(Input input)
{
    Input start = input;
    const unsigned char first = start.Byte(), second = start.Byte();
    const bool isFile = first == 'B' || second == 'M';
    const Bytes file = Affordable(isFile ? input.Rest() : MakeFile(input));
    CheckSave(CheckFile(file));
    const auto header = static_cast<std::ptrdiff_t>(std::min<std::size_t>(file.size(), 14));
    CheckSave(CheckPacked(Bytes(file.begin() + header, file.end())));
}
