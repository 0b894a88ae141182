#pragma once

#include "ZelUtil/TarvexDib.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
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

/// The whole pixel array, padding included.
inline Bytes PixelBytes(const CTarvexDib& dib)
{
    const unsigned char* bits = dib.GetScanLine(0);
    return Bytes(bits, bits + static_cast<std::ptrdiff_t>(dib.BytesPerScanLine()) * dib.Height());
}

inline Bytes Packed(const CTarvexDib& dib)
{
    Bytes packed(static_cast<std::size_t>(dib.GetDibLength()));
    packed.resize(dib.Save(packed.data(), dib.GetDibLength()) ? packed.size() : 0);
    return packed;
}

/// A picture of 8, 24 or 32 bits with random bytes everywhere, in padding and alpha too.
inline CTarvexDib RandomPicture(int width, int height, int bits)
{
    CTarvexDib dib;
    dib.Create(width, height, bits);
    const Bytes bytes = RandomBytes(PixelBytes(dib).size());
    std::copy(bytes.begin(), bytes.end(), dib.GetScanLine(0));
    return dib;
}

/// The packed form of any depth: header fields, `table` random colours, random pixels.
inline Bytes RandomPacked(int width, int height, int bits, int clrUsed, int table)
{
    const int rowBytes = (width * bits + 31) / 32 * 4;
    Bytes packed = RandomBytes(static_cast<std::size_t>(40 + 4 * table + rowBytes * height));
    BITMAPINFOHEADER header = {};
    header.biSize = 40;
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = 1;
    header.biBitCount = static_cast<std::uint16_t>(bits);
    header.biClrUsed = static_cast<std::uint32_t>(clrUsed);
    std::copy_n(reinterpret_cast<const unsigned char*>(&header), sizeof header, packed.begin());
    return packed;
}

inline CTarvexDib FromPacked(Bytes packed)
{
    CTarvexDib dib;
    dib.Load(packed.data(), static_cast<int>(packed.size()));
    return dib;
}

/// A BMP file around the packed form; its pixels start behind `table` colours.
inline Bytes FileAround(const Bytes& packed, int table)
{
    const auto offset = static_cast<unsigned>(54 + 4 * table);
    Bytes file = {'B', 'M', 1, 2, 3, 4, 5, 6, 7, 8};
    for (unsigned shift = 0; shift < 32; shift += 8)
        file.push_back(static_cast<unsigned char>(offset >> shift));
    file.insert(file.end(), packed.begin(), packed.end());
    return file;
}

inline bool LoadBytes(CTarvexDib& dib, const Bytes& bytes)
{
    const File file(std::tmpfile(), std::fclose);
    std::fwrite(bytes.data(), 1, bytes.size(), file.get());
    std::rewind(file.get());
    return dib.Load(file.get());
}

/// A folder that lives as long as this object.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::filesystem::remove_all(m_path); // of a process that had this number before
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

inline bool HasPixels(const CTarvexDib& dib)
{
    return dib.Width() > 0 && dib.Height() > 0;
}

inline bool IsTrueColor(const CTarvexDib& dib)
{
    return dib.BitCount() >= 24;
}

inline bool SameSize(const CTarvexDib& a, const CTarvexDib& b)
{
    return a.Width() == b.Width() && a.Height() == b.Height();
}

} // namespace test
