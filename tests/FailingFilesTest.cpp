#include "DebugLog.h"

#include "ZelUtil/INIFileReader.h"
#include "ZelUtil/OSDependant.h"
#include "ZelUtil/WinDib.h"

#include <fcntl.h>
#include <functional>

using namespace test;

namespace
{

using Text = std::string;
using OnRead = std::function<void(std::FILE*)>;

int g_readsBefore = -1; // the one that is stepped on
OnRead g_before, g_after;

template <typename Read>
auto Stepped(std::FILE* file, const Read& read)
{
    const bool isMeant = g_readsBefore >= 0 && g_readsBefore-- == 0;
    if (isMeant && g_before)
        g_before(file);
    const auto result = read();
    if (isMeant && g_after)
        g_after(file);
    return result;
}

// Steps on the read number `number`, from 1, while it lives.
class Step
{
public:
    Step(int number, const OnRead& before, const OnRead& after = {})
    {
        g_readsBefore = number - 1;
        g_before = before;
        g_after = after;
    }
    ~Step() { g_readsBefore = -1; }
};

// Makes the system refuse to read a stream: its descriptor is one to write to.
class Breaker
{
public:
    void Break(std::FILE* file)
    {
        const int nothing = open(kNullDevice, O_WRONLY);
        m_saved = dup(fileno(file));
        dup2(nothing, fileno(file));
        close(nothing);
    }

    void Mend(std::FILE* file)
    {
        dup2(m_saved, fileno(file));
        Forget();
    }

    /// The stream was closed as it was.
    void Forget() { close(m_saved); }

private:
    int m_saved = -1;
};

// The ways in which a file of `path` goes wrong in the middle: a read that fails, and one that comes when the
// file has been cut.
struct Trouble
{
    const char* what;
    OnRead before, after;
};

std::vector<Trouble> Troubles(Breaker& breaker, const Text& path)
{
    return {{"error", [&](auto* file) { breaker.Break(file); }, [&](auto* file) { breaker.Mend(file); }},
            {"cut", [path](auto*) { std::filesystem::resize_file(path, 100); }, {}}};
}

Bytes BytesOf(const Text& text)
{
    return Bytes(text.begin(), text.end());
}

Text TextOf(const Bytes& bytes)
{
    return Text(bytes.begin(), bytes.end());
}

// A reader that holds a file, and one that it is asked for.
class Asked
{
public:
    Asked(const TemporaryFolder& folder, bool indexed) : m_held(folder / "held.ini"), m_indexed(indexed)
    {
        WriteFile(m_held, BytesOf("[a]\nk=old\n"));
        Value(m_held);
    }

    Text Value(const Text& file)
    {
        CStdStr<char> value = "as it was";
        if (m_reader.getStringFromIni(file, "a", "k", &value, m_indexed, false))
            return value;
        EXPECT_EQ(value, m_indexed ? "as it was" : "");
        return "none";
    }

    // The value found, or what the reader holds behind a failure. It works afterwards.
    Text Outcome(const Text& file)
    {
        const int descriptors = OpenDescriptors();
        Text outcome = Value(file);
        EXPECT_EQ(OpenDescriptors(), descriptors);
        g_readsBefore = -1; // the steps were for this file
        if (outcome == "none")
        {
            std::filesystem::remove(m_held);
            outcome = Value(m_held) == "old" ? "kept" : "dropped";
        }
        WriteFile(m_held, BytesOf("[a]\nk=new\n"));
        m_reader.end_profile_string();
        m_reader.EndStringFromIni();
        EXPECT_EQ(Value(m_held), "new");
        return outcome;
    }

private:
    const Text m_held;
    const bool m_indexed;
    INIFileReader m_reader;
};

// What a picture is after an attempt to load a file into it. It works afterwards.
template <typename Dib>
Text Loaded(const Text& path)
{
    Dib dib;
    dib.Create(3, 3, 24);
    std::fill_n(dib.GetScanLine(0), 36, static_cast<unsigned char>(7));
    const Bytes before = Packed(dib);
    const int descriptors = OpenDescriptors();
    const bool loaded = dib.Load(path.c_str());
    EXPECT_EQ(OpenDescriptors(), descriptors);
    const Bytes after = Packed(dib);
    Bytes good = RandomPacked(5, 5, 8, 9, 9);
    EXPECT_TRUE(dib.Load(good.data(), static_cast<int>(good.size())));
    EXPECT_EQ(Packed(dib), good);
    return loaded ? TextOf(after) : after.empty() ? "empty" : after == before ? "unchanged" : "changed";
}

// The first name that a listing gives. It works afterwards.
Text Listed(const TemporaryFolder& folder, const Text& path)
{
    INIFileReader reader;
    CStdStr<char> name = "as it was";
    const int descriptors = OpenDescriptors();
    const bool found = reader.getFirstSectionName(path, name);
    EXPECT_FALSE(reader.getFirstSectionName(path, name));
    EXPECT_EQ(OpenDescriptors() - descriptors, found ? 1 : 0);
    const Text outcome = name;
    reader.EndStringFromIni();
    EXPECT_EQ(OpenDescriptors(), descriptors);
    WriteFile(folder / "good.ini", BytesOf("[good]\n"));
    EXPECT_TRUE(reader.getFirstSectionName(folder / "good.ini", name));
    EXPECT_EQ(name, "good");
    return outcome;
}

std::unique_ptr<OSDependant::IFileAccess> Access(const Text& path)
{
    return std::unique_ptr<OSDependant::IFileAccess>(
        OSDependant::openFile(path, OSDependant::IFileAccess::LittleEndian));
}

} // namespace

extern "C"
{
    std::size_t __real_fread(void* to, std::size_t size, std::size_t count, std::FILE* file);
    int __real_getc(std::FILE* file);

    std::size_t __wrap_fread(void* to, std::size_t size, std::size_t count, std::FILE* file)
    {
        return Stepped(file, [&] { return __real_fread(to, size, count, file); });
    }

    int __wrap_getc(std::FILE* file)
    {
        return Stepped(file, [&] { return __real_getc(file); });
    }
}

// Reads: the file header, three parts of a long header block, the pixels.
TEST(FailingFiles, PicturesAreEmptyUnlessAPixelWasThere)
{
    const TemporaryFolder folder;
    const Text path = folder / "a.bmp";
    const Bytes file = FileAround(RandomPacked(100, 100, 24, 0, 50000), 50000);
    const Text pixels = TextOf(file).substr(200054);
    Breaker breaker;
    for (const Trouble& trouble : Troubles(breaker, path))
        for (int number = 1; number <= 6; ++number)
        {
            SCOPED_TRACE(testing::Message() << trouble.what << " at read " << number);
            for (Text (*const load)(const Text&) : {Loaded<CTarvexDib>, Loaded<CWinDib>})
            {
                WriteFile(path, file);
                const Step step(number, trouble.before, trouble.after);
                const Text outcome = load(path);
                if (number < 5)
                {
                    EXPECT_EQ(outcome, "empty");
                    continue;
                }
                ASSERT_EQ(outcome.size(), 40 + pixels.size());
                const Text got = outcome.substr(40);
                const auto read = std::mismatch(got.begin(), got.end(), pixels.begin()).first;
                EXPECT_TRUE(number == 6 ? read == got.end() : read != got.begin() && read != got.end());
                EXPECT_TRUE(std::all_of(read, got.end(), [](char c) { return c == 0; })); // what is lacking
            }
        }
}

// Reads: four to count the characters, the last of which finds the end, and three to take them.
TEST(FailingFiles, EnginesHoldNothingAfterHalfAFile)
{
    const TemporaryFolder folder;
    const Text path = folder / "a.ini";
    const Bytes file = BytesOf("[a]\nk=v\n;" + Text(40000, '.') + "\n");
    Breaker breaker;
    for (const Trouble& trouble : Troubles(breaker, path))
        for (const bool indexed : {true, false})
            for (int number = 1; number <= 8; ++number)
            {
                SCOPED_TRACE(testing::Message()
                             << trouble.what << " at read " << number << ", indexed " << indexed);
                WriteFile(path, file);
                Asked asked(folder, indexed);
                const Step step(number, trouble.before, trouble.after);
                const bool isWhole = number == 8 || (number == 1 && !trouble.after); // short from the start
                EXPECT_EQ(asked.Outcome(path), isWhole ? "v" : "dropped");
            }
}

TEST(FailingFiles, ListingsAndReadersGoOnWhereTheyCan)
{
    const TemporaryFolder folder;
    const Text path = folder / "a.ini";
    const Bytes file = BytesOf("[one]\n;" + Text(20000, '.') + "\n[two]\n");
    Breaker breaker;
    for (const Trouble& trouble : Troubles(breaker, path))
    {
        SCOPED_TRACE(trouble.what);
        WriteFile(path, file);
        const int descriptors = OpenDescriptors();
        INIFileReader reader;
        CStdStr<char> name;
        ASSERT_TRUE(reader.getFirstSectionName(path, name));
        std::FILE* broken = nullptr;
        {
            const Step step(1, [&](auto* stream) { trouble.before(broken = stream); });
            EXPECT_FALSE(reader.getNextSectionName(name));
            EXPECT_FALSE(reader.getNextSectionName(name));
        }
        EXPECT_NE(broken, nullptr);
        EXPECT_EQ(name, "one");
        EXPECT_EQ(OpenDescriptors() - descriptors, trouble.after ? 1 : 0); // the breaker's
        reader.EndStringFromIni();
        if (trouble.after)
            breaker.Forget();
        EXPECT_EQ(OpenDescriptors(), descriptors);
        WriteFile(path, file);
        EXPECT_TRUE(reader.getFirstSectionName(path, name) && reader.getNextSectionName(name));
        EXPECT_EQ(name, "two");
        reader.EndStringFromIni();

        const auto access = Access(path);
        unsigned char block[16384];
        int four = 0;
        ASSERT_TRUE(access->read(&four));
        {
            const Step step(1, trouble.before, trouble.after);
            EXPECT_FALSE(access->read(block, 16384UL));
        }
        EXPECT_EQ(access->getLength(), trouble.after ? file.size() : 100U);
        EXPECT_TRUE(access->skip(-static_cast<long>(access->getPosition())));
        EXPECT_TRUE(access->read(block, 100UL));
        EXPECT_TRUE(std::equal(block, block + 100, file.begin()));
    }
    EXPECT_EQ(Listed(folder, folder / "."), "as it was"); // a folder
}

TEST(FailingFiles, PositionsBeyondEveryFile)
{
    const TemporaryFolder folder;
    WriteFile(folder / "a", {1, 2, 3});
    constexpr long kLeast = std::numeric_limits<long>::min(), kMost = std::numeric_limits<long>::max();
    for (const Text& path : {folder / "a", Text("/proc/self/mem")}) // where every position is one
    {
        const auto access = Access(path);
        for (const long offset : {kLeast, kMost, 1L, kMost})
        {
            const unsigned long before = access->getPosition();
            EXPECT_TRUE(access->skip(offset) ? offset > 0 : access->getPosition() == before) << offset;
        }
    }
}

TEST(FailingFiles, PipesThatNeverEndAreReadAsFarAsNeeded)
{
    const TemporaryFolder folder;
    const Text path = folder / "pipe", text = "[a]\nk=v\n";
    if (!MakeFifo(path.c_str()))
        GTEST_SKIP() << "needs named pipes";
    std::filesystem::remove(path);
    const Bytes packed = RandomPacked(10, 10, 24, 0, 0);
    {
        const EndlessPipe pipe(path, TextOf(FileAround(packed, 0)), "more");
        EXPECT_EQ(Loaded<CTarvexDib>(path), TextOf(packed));
    }
    {
        const EndlessPipe pipe(path, "no", " picture at all");
        EXPECT_EQ(Loaded<CWinDib>(path), "empty");
    }
    for (const bool indexed : {true, false})
    {
        const EndlessPipe pipe(path, text, text); // too long
        EXPECT_EQ(Asked(folder, indexed).Outcome(path), "kept");
    }
    {
        const EndlessPipe pipe(path, text, text);
        EXPECT_EQ(Listed(folder, path), "a");
    }
    const EndlessPipe pipe(path, text, text);
    const auto access = Access(path);
    int four = 0;
    EXPECT_TRUE(access->read(&four));
    EXPECT_FALSE(access->skip(1) || access->skip(0));
    EXPECT_TRUE(access->getPosition() == 0 && access->getLength() == 0); // cannot be told
    char next[4];
    EXPECT_TRUE(access->read(next, 4UL));
    EXPECT_EQ(Text(next, 4), "k=v\n");
    const File file(std::fopen(path.c_str(), "rb"), std::fclose);
    long length = 5;
    EXPECT_FALSE(OSDependant::GetFileLength(file.get(), length));
    EXPECT_EQ(length, -1);
}

TEST(FailingFiles, NothingIsReadOrWrittenWithoutTheRightTo)
{
    if (!NoRights::ArePossible())
        GTEST_SKIP() << "needs rights that can be dropped";
    const TemporaryFolder folder, shared;
    const Text bmp = folder / "a.bmp", text = folder / "a.ini", closed = folder / "closed";
    const Bytes picture = FileAround(RandomPacked(2, 2, 24, 0, 0), 0);
    WriteFile(bmp, picture);
    WriteFile(text, BytesOf("[a]\nk=v\n"));
    std::filesystem::create_directory(closed);
    std::filesystem::permissions(shared / "", std::filesystem::perms::all);
    for (const Text& path : {bmp, text, closed})
        std::filesystem::permissions(path, std::filesystem::perms::none);
    const Log log;
    std::ofstream{kLogFile} << "old\n";
    std::filesystem::permissions(kLogFile, std::filesystem::perms::none);
    OSDependant::ActivateDebugLog(true);
    {
        const NoRights noRights;
        EXPECT_EQ(Loaded<CTarvexDib>(bmp), "unchanged");
        EXPECT_EQ(Loaded<CWinDib>(closed + "/a.bmp"), "unchanged");
        const CTarvexDib dib = RandomPicture(3, 3, 24);
        for (const Text& path : {bmp, closed + "/new.bmp"})
            EXPECT_FALSE(dib.Save(path.c_str())) << path;
        EXPECT_TRUE(dib.Save((shared / "new.bmp").c_str()));
        for (const bool indexed : {true, false})
            EXPECT_EQ(Asked(shared, indexed).Outcome(text), "kept");
        EXPECT_EQ(Listed(shared, text), "as it was");
        const auto access = Access(text);
        char byte = 0;
        EXPECT_FALSE(access->skip(0) || access->read(&byte));
        EXPECT_TRUE(access->getPosition() == 0 && access->getLength() == 0);
        EXPECT_FALSE(OSDependant::CreateDir(closed + "/new", nullptr));
        CStdStr<char>* names = nullptr;
        EXPECT_EQ(OSDependant::GetFileListInDirectory(closed, "*", &names), 0U);
        EXPECT_EQ(names, nullptr);
        EXPECT_EQ(OSDependant::LoadLib(text), nullptr);
        EXPECT_EQ(Echo(BasicError("m", "t", "f", 1)), kNoLogFile);
    }
    for (const Text& path : {bmp, closed, Text(kLogFile)})
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    EXPECT_EQ(ReadFile(bmp), picture);
    EXPECT_TRUE(std::filesystem::is_empty(closed));
    EXPECT_EQ(log.Text(), "old\n");
    EXPECT_EQ(Echo(BasicError("m", "t", "f", 1)), "\nm: t FILE = f LINE = 1");
}

TEST(FailingFiles, WhatFitsOnAFullDiskStays)
{
    if (!FullDisk::IsPossible())
        GTEST_SKIP() << "needs limits on the size of files";
    const TemporaryFolder folder;
    const Text path = folder / "a.bmp";
    const CTarvexDib dib = RandomPicture(100, 100, 24);
    ASSERT_TRUE(dib.Save(path.c_str()));
    const Bytes whole = ReadFile(path), before = Packed(dib);
    for (const std::size_t room : {0U, 1U, 13U, 14U, 15U, 53U, 54U, 55U, 4096U, 30053U, 30054U, 30055U})
        for (const bool byPath : {true, false})
        {
            SCOPED_TRACE(testing::Message() << room << " bytes, by path " << byPath);
            WriteFile(path, {});
            const int descriptors = OpenDescriptors();
            File file(byPath ? nullptr : std::fopen(path.c_str(), "wb"), std::fclose);
            bool saved = false;
            {
                const FullDisk disk(static_cast<long>(room));
                if (file != nullptr)
                    std::setvbuf(file.get(), nullptr, _IONBF, 0);
                saved = byPath ? dib.Save(path.c_str()) : dib.Save(file.get());
            }
            file.reset();
            EXPECT_EQ(saved, room >= whole.size());
            EXPECT_EQ(OpenDescriptors(), descriptors);
            const Bytes expected(whole.begin(),
                                 whole.begin() + static_cast<long>(std::min(room, whole.size())));
            EXPECT_EQ(ReadFile(path), expected);
            EXPECT_EQ(Packed(dib), before);
        }

    const Log log;
    OSDependant::ActivateDebugLog(true);
    const BasicError error("m", "t", "f", 1);
    const Text echo = "\nm: t FILE = f LINE = 1";
    EXPECT_EQ(Echo(error), echo);
    const Text first = log.Text();
    const int descriptors = OpenDescriptors();
    testing::internal::CaptureStderr();
    {
        const FullDisk disk(static_cast<long>(first.size()));
        EXCEPTION_LOG(error);
        EXCEPTION_LOG(EConstruction("m", "p", "t", "f", 1));
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr().substr(0, echo.size()), echo);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_EQ(log.Text(), first);
    EXPECT_EQ(Echo(error), echo);
    EXPECT_GT(log.Text().size(), first.size());
}
