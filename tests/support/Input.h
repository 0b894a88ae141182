#pragma once

#include "Pictures.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace test
{

/// A property throws it where something that has to hold does not.
struct Violation : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

inline void Require(bool holds, const std::string& what)
{
    if (!holds)
        throw Violation("this does not hold: " + what);
}

/// The bytes that decide what a property tries, taken from the front. After the last byte there are zeros.
class Input
{
public:
    Input(const std::uint8_t* data, std::size_t size) : m_at(data), m_end(data + size) {}

    bool IsEmpty() const { return m_at == m_end; }
    std::uint8_t Byte() { return IsEmpty() ? std::uint8_t{0} : *m_at++; }
    int Below(int limit) { return Byte() % limit; }

    /// Small numbers of both signs, and the two extremes of int.
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

    /// A text up to the next zero byte.
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

/// The path of a file with these bytes, valid until the next call.
inline std::string Scratch(const Bytes& bytes)
{
    static const TemporaryFolder folder;
    const std::string path = folder / "input";
    std::filesystem::remove(path); // emptying a file instead would make some file systems write to the disk
    WriteFile(path, bytes);
    return path;
}

} // namespace test
