#pragma once

#include "ZelUtil/TarvexDib.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <unistd.h>

namespace test
{

using Bytes = std::vector<unsigned char>;
using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

inline std::mt19937& Random()
{
    static std::mt19937 random(20);
    return random;
}

inline int RandomInt(int from, int to)
{
    return std::uniform_int_distribution<int>(from, to)(Random());
}

inline Bytes RandomBytes(std::size_t count)
{
    Bytes bytes(count);
    std::generate(bytes.begin(), bytes.end(), [] { return static_cast<unsigned char>(Random()()); });
    return bytes;
}

inline void WriteBytes(unsigned char* at, const Bytes& bytes)
{
    std::copy(bytes.begin(), bytes.end(), at);
}

/// The little-endian number of `width` bytes at `at`.
inline std::uint32_t Number(const Bytes& bytes, std::size_t at, std::size_t width = 4)
{
    std::uint32_t number = 0;
    std::memcpy(&number, &bytes[at], width);
    return number;
}

inline void PutNumber(Bytes& bytes, std::size_t at, std::uint32_t number)
{
    std::memcpy(&bytes[at], &number, 4);
}

/// The whole pixel array, padding included.
inline Bytes PixelBytes(const CTarvexDib& dib)
{
    const unsigned char* bits = dib.GetScanLine(0);
    return Bytes(bits, bits + static_cast<std::ptrdiff_t>(dib.BytesPerScanLine()) * dib.Height());
}

/// Header, colours and pixels; nothing for an empty image.
inline Bytes Packed(const CTarvexDib& dib)
{
    Bytes packed(static_cast<std::size_t>(dib.GetDibLength()));
    packed.resize(dib.Save(packed.data(), dib.GetDibLength()) ? packed.size() : 0);
    return packed;
}

/// The packed form of any depth: a header, then `table` colours and the pixels, all zero.
inline Bytes BlankPacked(int width, int height, int bits, int clrUsed, int table)
{
    Bytes packed(static_cast<std::size_t>(40 + 4 * table + (width * bits + 31) / 32 * 4 * height));
    packed[0] = 40;
    PutNumber(packed, 4, static_cast<std::uint32_t>(width));
    PutNumber(packed, 8, static_cast<std::uint32_t>(height));
    packed[12] = 1;
    packed[14] = static_cast<unsigned char>(bits);
    PutNumber(packed, 32, static_cast<std::uint32_t>(clrUsed));
    return packed;
}

inline Bytes RandomPacked(int width, int height, int bits, int clrUsed, int table)
{
    Bytes packed = BlankPacked(width, height, bits, clrUsed, table);
    WriteBytes(packed.data() + 40, RandomBytes(packed.size() - 40));
    return packed;
}

/// Loads from a buffer that ends where the packed form does, so that a sanitizer sees any read beyond it.
inline bool LoadPacked(CTarvexDib& dib, Bytes packed)
{
    packed.shrink_to_fit();
    return dib.Load(packed.data(), static_cast<int>(packed.size()));
}

inline CTarvexDib FromPacked(const Bytes& packed)
{
    CTarvexDib dib;
    LoadPacked(dib, packed);
    return dib;
}

/// A picture of any depth with random bytes everywhere, in padding and alpha too.
inline CTarvexDib RandomPicture(int width, int height, int bits)
{
    const int table = bits <= 8 ? 1 << bits : 0;
    return FromPacked(RandomPacked(width, height, bits, table, table));
}

/// A BMP file of the packed form, whose pixels start after `table` colours.
inline Bytes FileAround(const Bytes& packed, int table)
{
    Bytes file = {'B', 'M'};
    file.resize(14, 9); // neither the file's size nor the reserved words matter
    PutNumber(file, 10, static_cast<std::uint32_t>(54 + 4 * table));
    file.insert(file.end(), packed.begin(), packed.end());
    return file;
}

/// A folder that lives as long as this object.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::filesystem::remove_all(m_path); // left by an earlier process of the same number
        std::filesystem::create_directories(m_path);
    }
    ~TemporaryFolder() { std::filesystem::remove_all(m_path); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string operator/(const std::string& name) const { return (m_path / name).string(); }

private:
    std::filesystem::path m_path = std::filesystem::temp_directory_path() /
                                   ("zelutil-" + std::to_string(getpid()) + "-" + std::to_string(s_count++));
    static inline int s_count = 0;
};

inline Bytes ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

inline void WriteFile(const std::string& path, const Bytes& bytes)
{
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

} // namespace test
