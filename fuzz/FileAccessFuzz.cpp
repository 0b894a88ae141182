// A script of typed reads and skips in a file, in either byte order, against the file's bytes.

#include "Fuzz.h"

#include "ZelUtil/OSDependant.h"

#include <cstring>
#include <limits>
#include <memory>

using namespace fuzz;
using OSDependant::IFileAccess;

namespace
{

class Script
{
public:
    explicit Script(Input& input)
    {
        m_isBig = input.Below(2) == 0;
        const std::size_t length = input.Byte();
        m_commands = input.Take(length);
        m_file = input.Rest();
        m_reader.reset(OSDependant::openFile(Scratch(m_file), Mode()));
    }

    void Run()
    {
        Input commands(m_commands.data(), m_commands.size());
        while (!commands.IsEmpty())
        {
            Step(commands);
            Require(m_reader->getPosition() == m_position, "the position is known");
        }
        Require(m_reader->getLength() == m_file.size() && m_reader->getPosition() == m_position,
                "the length is the file's, and asking for it moves nothing");
    }

private:
    IFileAccess::FileInterpretationModes Mode() const
    {
        return m_isBig ? IFileAccess::BigEndian : IFileAccess::LittleEndian;
    }

    void Step(Input& commands)
    {
        switch (commands.Below(12))
        {
        case 0:
            return Read<double>(false);
        case 1:
            return Read<int>(true);
        case 2:
            return Read<unsigned>(true);
        case 3:
            return Read<float>(true);
        case 4:
            return Read<short>(true);
        case 5:
            return Read<unsigned short>(true);
        case 6:
            return Read<char>(false);
        case 7:
            return Read<unsigned char>(false);
        case 8:
            return ReadBlock(commands.Byte());
        case 9:
            m_isBig = !m_isBig;
            m_reader->setInterpretationMode(Mode());
            return Require(m_reader->getInterpretationMode() == Mode(), "a mode is kept");
        case 10:
            return Skip(commands.Number());
        default:
            return Skip(commands.Below(2) == 0 ? std::numeric_limits<long>::max()
                                               : std::numeric_limits<long>::min());
        }
    }

    // What a read of `count` bytes over `before` leaves, and whether all were there; moves on.
    bool Expect(std::size_t count, Bytes& bytes)
    {
        const std::uint64_t left = m_position < m_file.size() ? m_file.size() - m_position : 0;
        const auto there = static_cast<std::size_t>(std::min<std::uint64_t>(left, count));
        for (std::size_t i = 0; i < there; ++i)
            bytes[i] = m_file[static_cast<std::size_t>(m_position) + i];
        m_position += there;
        return there == count;
    }

    template <typename Value>
    void Read(bool isOrdered)
    {
        Bytes expected(sizeof(Value), 0x5A);
        Value value;
        std::memcpy(&value, expected.data(), sizeof value);
        const bool isWhole = Expect(sizeof value, expected);
        if (isWhole && isOrdered && m_isBig)
            std::reverse(expected.begin(), expected.end());
        Require(m_reader->read(&value) == isWhole, "a value is read where all its bytes are there");
        Require(std::memcmp(&value, expected.data(), sizeof value) == 0, "a value has the bytes of the file");
    }

    void ReadBlock(std::size_t count)
    {
        Bytes expected(count, 0x5A), block = expected;
        const bool isWhole = Expect(count, expected);
        Require(m_reader->read(static_cast<void*>(block.data()), static_cast<unsigned long>(count)) ==
                        isWhole &&
                    block == expected,
                "a block has the bytes of the file");
    }

    void Skip(long offset)
    {
        const auto before = static_cast<std::int64_t>(m_position);
        const bool isBefore = offset < 0 && before + offset < 0;
        const bool isFar =
            offset > INT32_MAX / 2; // it depends on the system whether there is such a position
        const bool moved = m_reader->skip(offset);
        Require(isFar || moved == !isBefore, "a skip ends where there is a position");
        if (moved)
            m_position += static_cast<std::uint64_t>(offset);
        if (isFar && moved)
        {
            Require(m_reader->getPosition() == m_position, "a far skip ends where it should");
            Skip(-offset);
        }
    }

    Bytes m_commands, m_file;
    std::unique_ptr<IFileAccess> m_reader;
    bool m_isBig = false;
    std::uint64_t m_position = 0;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, std::min<std::size_t>(size, 4096));
    Script(input).Run();
    return 0;
}
