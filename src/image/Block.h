#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

/// The memory of images. Sizes are at most 2^31 - 1 bytes.
namespace zel
{

using Block = std::unique_ptr<unsigned char[]>;

/// The bytes are not initialised. Null where memory runs out.
inline Block Allocate(std::size_t bytes)
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

inline Block Allocate(std::int64_t bytes)
{
    return Allocate(static_cast<std::size_t>(bytes));
}

/// Sets the padding of rows to 0. Each row has `rowBytes` bytes, of which the first `usedBytes` are pixels.
inline void ClearPadding(unsigned char* bits, std::int64_t rowBytes, std::int64_t usedBytes, int height)
{
    if (rowBytes == usedBytes)
        return;
    for (int row = 0; row < height; ++row, bits += rowBytes)
        std::memset(bits + usedBytes, 0, static_cast<std::size_t>(rowBytes - usedBytes));
}

} // namespace zel
