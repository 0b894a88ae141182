// Hexadecimal text there and back, texts of any kind against a plain reading, and the order of identifiers.

#include "Fuzz.h"

#include "ZelUtil/ZelId.h"

#include <cctype>
#include <cstring>
#include <iterator>

using namespace fuzz;

namespace
{

// The value of the first `length` pairs; false where one has none.
bool ReadPairs(const std::string& text, std::size_t length, Bytes& bytes)
{
    bytes.clear();
    for (std::size_t i = 0; i < length; ++i)
    {
        const std::string pair = text.substr(std::min(text.size(), 2 * i), 2);
        std::size_t at = 0;
        while (at < pair.size() && std::isspace(static_cast<unsigned char>(pair[at])))
            ++at;
        const bool isNegative = at < pair.size() && pair[at] == '-';
        at += isNegative || (at < pair.size() && pair[at] == '+');
        if (pair.size() < 2 || at == 2 || !std::isxdigit(static_cast<unsigned char>(pair[at])))
            return false;
        int value = 0;
        for (; at < 2 && std::isxdigit(static_cast<unsigned char>(pair[at])); ++at)
            value = 16 * value +
                    static_cast<int>(
                        std::string("0123456789abcdef").find(static_cast<char>(std::tolower(pair[at]))));
        bytes.push_back(static_cast<unsigned char>(isNegative ? -value : value));
    }
    return true;
}

void CheckRoundTrip(const Bytes& bytes)
{
    const auto length = static_cast<unsigned short>(bytes.size());
    const Bytes reversed(bytes.rbegin(), bytes.rend());
    std::string text(2 * bytes.size() + 1, '?'), backwards = text;
    BinToString(bytes.data(), length, text.data());
    RBinToString(reversed.data(), length, backwards.data());
    Require(text == backwards && text.back() == '\0', "both orders write the same of reversed bytes");
    Require(std::all_of(text.begin(), text.end() - 1,
                        [](char c) { return std::isdigit(c) || (c >= 'a' && c <= 'f'); }),
            "lower-case digits");

    Bytes read(bytes.size()), readBackwards(bytes.size());
    Require(StringToBin(text.c_str(), read.data(), length) && read == bytes, "text reads as its bytes");
    Require(RStringToBin(text.c_str(), readBackwards.data(), length) && readBackwards == reversed,
            "text reads backwards as its bytes");
}

void CheckText(const std::string& text, std::size_t length)
{
    const Bytes before(length, 0x5A);
    Bytes expected, read = before, readBackwards = before;
    const bool isRead = ReadPairs(text, length, expected);
    if (!isRead)
        expected = before;
    const Bytes terminated(text.c_str(), text.c_str() + text.size() + 1); // of exactly this size
    const auto* const exact = reinterpret_cast<const char*>(terminated.data());
    Require(StringToBin(exact, read.data(), static_cast<unsigned short>(length)) == isRead &&
                RStringToBin(exact, readBackwards.data(), static_cast<unsigned short>(length)) == isRead,
            "a text has a value where each of its pairs has");
    Require(read == expected, "bytes are those of the pairs, or as they were");
    std::reverse(readBackwards.begin(), readBackwards.end());
    Require(readBackwards == expected, "the same backwards");
}

void CheckOrder(const Bytes& first, const Bytes& second)
{
    unsigned char a[16], b[16], max[16], out[16];
    std::copy_n(first.begin(), 16, a);
    std::copy_n(second.begin(), 16, b);
    std::fill_n(max, 16, static_cast<unsigned char>(255));
    try
    {
        const ZelId last(max);
        Require(false, "the last number is refused");
    }
    catch (const EOutOfBounds&) // the counter is at zero
    {
    }
    if (std::equal(a, a + 16, max) || std::equal(b, b + 16, max))
        return;

    const ZelId idA(a), idB(b);
    const bool isLess =
        std::lexicographical_compare(std::rbegin(a), std::rend(a), std::rbegin(b), std::rend(b));
    const bool isEqual = std::equal(a, a + 16, b);
    Require((idA < idB) == isLess && (idA < b) == isLess && (idB > idA) == isLess && (idB > a) == isLess &&
                (idA >= idB) == !isLess && (idB <= a) == !isLess,
            "identifiers have the order of their numbers");
    Require((idA == idB) == isEqual && (idA != b) == !isEqual, "equal identifiers have equal bytes");
    idA.get(out);
    Require(std::equal(a, a + 16, out), "an identifier gives back its bytes");

    unsigned char* const larger = isLess ? b : a;
    for (unsigned char* byte = larger; byte != larger + 16; ++byte)
    {
        *byte = static_cast<unsigned char>(*byte + 1);
        if (*byte != 0)
            break;
    }
    try
    {
        Require(ZelId::create() == (isLess ? b : a), "the fresh one is next to the largest");
    }
    catch (const EOutOfBounds&)
    {
        Require(std::equal(larger, larger + 16, max), "only the last number is refused");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, std::min<std::size_t>(size, 4096));
    const std::size_t length = input.Byte();
    const Bytes rest = input.Rest();
    CheckRoundTrip(rest);
    const std::string text(rest.begin(), std::find(rest.begin(), rest.end(), 0));
    CheckText(text, length);
    CheckText(text, text.size() / 2);

    Bytes numbers = rest;
    numbers.resize(32);
    CheckOrder(Bytes(numbers.begin(), numbers.begin() + 16), Bytes(numbers.begin() + 16, numbers.end()));
    return 0;
}
