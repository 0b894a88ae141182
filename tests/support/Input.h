#pragma once

#include "Pictures.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

/// A target: asserts its properties for one input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// What the targets share.
namespace fuzz
{

using test::Bytes;

/// Ends the process, as the engine expects, where a property does not hold.
inline void Require(bool holds, const std::string& property)
{
    if (holds)
        return;
    std::fprintf(stderr, "This does not hold: %s\n", property.c_str());
    std::abort();
}

/// Takes an input from its front; behind its end there are zeros.
class Input
{
public:
    Input(const std::uint8_t* data, std::size_t size) : m_at(data), m_end(data + size) {}

    bool IsEmpty() const { return m_at == m_end; }
    std::uint8_t Byte() { return IsEmpty() ? std::uint8_t{0} : *m_at++; }
    int Below(int limit) { return Byte() % limit; }

    /// Small numbers of both signs, and the two extremes.
    int Number()
    {
        const int number = static_cast<std::int8_t>(Byte());
        return number == 127 ? INT32_MAX : number == -128 ? INT32_MIN : number;
    }

    Bytes Take(std::size_t count)
    {
        const std::uint8_t* const from = m_at;
        m_at += std::min(count, static_cast<std::size_t>(m_end - m_at));
        return Bytes(from, m_at);
    }
    Bytes Rest() { return Take(static_cast<std::size_t>(m_end - m_at)); }

    /// A text that ends at a zero byte.
    std::string Text()
    {
        std::string text;
        while (const char character = static_cast<char>(Byte()))
            text += character;
        return text;
    }

private:
    const std::uint8_t* m_at;
    const std::uint8_t* m_end;
};

/// The path of a file with these bytes, until the next call.
inline std::string Scratch(const Bytes& bytes)
{
    static const test::TemporaryFolder folder;
    const std::string path = folder / "input";
    test::WriteFile(path, bytes);
    return path;
}

/// A file that claims more than 64 KB of pixels loses what it has of them, so that loading it is cheap.
inline Bytes Affordable(Bytes file)
{
    const auto number = [&](std::size_t at)
    {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < 4; ++i)
            value |= std::uint32_t{file[at + i]} << (8 * i);
        return value;
    };
    if (file.size() < 54 || double{1} * number(18) * number(22) * (file[28] | file[29] << 8) <= 8 * 65536.0)
        return file;
    file.resize(std::min<std::size_t>(file.size(), std::max(number(10), 54U)));
    return file;
}

} // namespace fuzz
