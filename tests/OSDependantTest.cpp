#include "ZelUtil/OSDependant.h"

#include "Pictures.h"
#include "System.h"

#include <atomic>
#include <chrono>
#include <climits>
#include <cstring>
#include <ctime>
#include <gtest/gtest.h>

using namespace OSDependant;
using namespace test;
using Reader = std::unique_ptr<IFileAccess>;
using Mode = IFileAccess::FileInterpretationModes;
static_assert(std::is_same_v<std::underlying_type_t<Mode>, int>);

// Reads a value at `offset`: all of its bytes in the right order, or those that are left.
template <typename Value>
static void CheckRead(IFileAccess& reader, const Bytes& file, std::size_t offset, Value value)
{
    const std::size_t count = std::min(sizeof value, file.size() - offset);
    Bytes expected(sizeof value, 0x7F);
    std::memset(&value, 0x7F, sizeof value);
    std::copy_n(file.data() + offset, count, expected.data());
    if (reader.getInterpretationMode() == IFileAccess::BigEndian && count == sizeof value && count < 8)
        std::reverse(expected.begin(), expected.end());
    EXPECT_TRUE(reader.skip(static_cast<long>(offset - reader.getPosition())));
    EXPECT_EQ(reader.read(&value), count == sizeof value);
    EXPECT_EQ(std::memcmp(&value, expected.data(), sizeof value), 0)
        << sizeof value << " bytes at " << offset;
    EXPECT_EQ(reader.getPosition(), offset + count);
}

TEST(FileAccess, ReadsValuesInEitherOrder)
{
    const TemporaryFolder folder;
    const Bytes file = {0x12, 0x34, 0x56, 0x78, 0xFF, 0x80, 1, 2, 3, 4, 5};
    WriteFile(folder / "a", file);
    for (const int mode : {1, 0, 2, -1})
    {
        const Reader reader(openFile(folder / "a", static_cast<Mode>(mode)));
        EXPECT_EQ(reader->getInterpretationMode(), mode);
        const auto check = [&](auto... values)
        {
            for (std::size_t offset = 0; offset <= file.size(); ++offset)
                (CheckRead(*reader, file, offset, values), ...);
        };
        check(0.0, 0, 0U, 0.0F, short{}, static_cast<unsigned short>(0), char{},
              static_cast<unsigned char>(0));

        int value = 0;
        unsigned char block[4] = {};
        EXPECT_TRUE(reader->skip(-11) && reader->read(block, 3UL) && block[2] == 0x56 && block[3] == 0);
        EXPECT_TRUE(!reader->skip(-4) && reader->getPosition() == 3);
        reader->setInterpretationMode(mode == 0 ? IFileAccess::LittleEndian : IFileAccess::BigEndian);
        EXPECT_TRUE(reader->skip(-3) && reader->read(&value) && reader->read(block, 0UL));
        EXPECT_EQ(value, mode == 0 ? 0x78563412 : 0x12345678);
        EXPECT_TRUE(reader->skip(16) && !reader->read(block, 1UL)); // past the end
        EXPECT_TRUE(reader->getPosition() == 20 && reader->getLength() == 11 && reader->getPosition() == 20);
    }
}

TEST(FileAccess, IsOfNothingWithoutAFile)
{
    const TemporaryFolder folder;
    for (const std::string& name : {folder / "missing", folder / "", std::string()})
    {
        const Reader reader(openFile(name, IFileAccess::LittleEndian));
        char byte = 0;
        EXPECT_FALSE(reader->skip(0) || reader->read(&byte) || reader->read(&byte, 0UL));
        EXPECT_EQ(reader->getPosition() + reader->getLength(), 0U);
    }

    const std::string pipe = folder / "pipe";
    const File ends(MakeFifo(pipe.c_str()) ? std::fopen(pipe.c_str(), "r+") : nullptr, std::fclose);
    long length = 5;
    EXPECT_TRUE(!GetFileLength(ends.get(), length) && length == -1);
    if (ends == nullptr)
        return;
    EXPECT_TRUE(std::fputs("abcd", ends.get()) >= 0 && std::fflush(ends.get()) == 0);
    const Reader reader(openFile(pipe, IFileAccess::LittleEndian));
    char bytes[2];
    EXPECT_TRUE(reader->read(bytes, 2UL) && !reader->skip(0) && reader->read(bytes, 2UL) && bytes[1] == 'd');
    EXPECT_EQ(reader->getPosition() + reader->getLength(), 0U); // both unknown
}

TEST(FileAccess, TellsLengthsAndPositionsOfLargeFiles)
{
    const TemporaryFolder folder;
    for (const std::uint64_t size : {0x7FFFFFFFULL, 0x80000000ULL, 0xFFFFFFFFULL, 0x100000001ULL})
    {
        WriteFile(folder / "a", {1});
        std::filesystem::resize_file(folder / "a", size);
        const Reader reader(openFile(folder / "a", IFileAccess::BigEndian));
        for (const std::uint64_t part : {size / 3, size / 3, size - size / 3 * 2})
            EXPECT_TRUE(reader->skip(static_cast<long>(part)));
        const std::uint64_t told = size <= ULONG_MAX ? size : 0;
        char byte = 1;
        EXPECT_TRUE(reader->getLength() == told && reader->getPosition() == told) << size;
        EXPECT_TRUE(!reader->read(&byte) && reader->skip(-1) && reader->read(&byte) && byte == 0) << size;

        const File file(std::fopen((folder / "a").c_str(), "rb"), std::fclose);
        long length = std::getc(file.get());
        EXPECT_EQ(GetFileLength(file.get(), length), size <= LONG_MAX);
        EXPECT_EQ(length, size <= LONG_MAX ? static_cast<long>(size) : -1);
        EXPECT_EQ(std::ftell(file.get()), 1);
    }
}

// The names of a listing after their count.
static std::string Listed(const std::string& directory, const std::string& pattern)
{
    CStdStr<char> untouched, *list = &untouched;
    const unsigned long count = GetFileListInDirectory(directory, pattern, &list);
    EXPECT_EQ(list == &untouched, count == 0);
    const std::unique_ptr<CStdStr<char>[]> owned(count == 0 ? nullptr : list);
    if (!kListsInByteOrder)
        std::sort(list, list + count);
    std::string text = std::to_string(count);
    std::for_each(list, list + count, [&](const std::string& name) { text += " " + name; });
    return text;
}

TEST(Folders, AreCreatedAndListed)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(CreateDir(folder / "sub", &folder) && CreateDir(folder / "sub.txt", nullptr));
    for (const char* name : {"a.txt", "B.TXT", "c.text", "d", ".hid", "two.dots.txt", "sub/deep.txt"})
        WriteFile(folder / name, {1});
    EXPECT_FALSE(CreateDir(folder / "sub", nullptr) || CreateDir(folder / "d", nullptr));
    EXPECT_FALSE(CreateDir(folder / "none/c", nullptr) || CreateDir("", nullptr));

    const auto home = std::filesystem::current_path();
    std::filesystem::current_path(folder / "");
    const std::string root = folder / "", whole = "8 .hid B.TXT a.txt c.text d sub sub.txt two.dots.txt";
    const std::string cases[][3] = {{root, "*", whole},
                                    {root + "\\", "*", whole},
                                    {"", "*", whole},
                                    {"sub", "*", "1 deep.txt"},
                                    {"d", "*", "0"},
                                    {"none", "*", "0"},
                                    {"", "*.*", "6 .hid B.TXT a.txt c.text sub.txt two.dots.txt"},
                                    {"", "*.t*", "5 B.TXT a.txt c.text sub.txt two.dots.txt"},
                                    {"", "*.tx?", "4 B.TXT a.txt sub.txt two.dots.txt"},
                                    {"", "?.TXT", "2 B.TXT a.txt"},
                                    {"", "*.dots.*", "1 two.dots.txt"},
                                    {"", "sub\\*", "1 deep.txt"},
                                    {"", "sub/*.TXT", "1 deep.txt"},
                                    {"", "sub*\\*", "0"},
                                    {"", "*.", "0"}, // the extension is "."
                                    {"", "", "0"}};
    for (const auto& [directory, pattern, names] : cases)
        EXPECT_EQ(Listed(directory, pattern), names) << directory << " " << pattern;
    std::filesystem::current_path(home);
}

TEST(Threads, RunEndAndLeaveNothing)
{
    EXPECT_EQ(beginThread(nullptr, nullptr), 0U);
    std::atomic<int> ended = 0;
    const auto routine = [](void* count) -> unsigned long
    { return static_cast<unsigned long>(++*static_cast<std::atomic<int>*>(count)); };
    long before = 0;
    for (int i = 1; i <= 300; ++i)
    {
        ASSERT_NE(beginThread(routine, &ended), 0U);
        for (int wait = 0; ended != i && wait < 10000; ++wait)
            threadSleep(wait < 1000 ? 0 : 1);
        ASSERT_EQ(ended, i);
        before = i == 50 ? ThreadRemains() : before;
    }
    EXPECT_LT(ThreadRemains(), before + 125); // half of what 250 threads would leave
}

TEST(Time, OfDayAndSpent)
{
    const auto start = std::chrono::steady_clock::now();
    threadSleep(1200);
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
    EXPECT_TRUE(spent.count() >= 1.19 && spent.count() < 8) << spent.count();

    unsigned short seconds = 99, minutes = 99, hours = 99;
    const std::time_t now = std::time(nullptr);
    getTime(&seconds, &minutes, &hours);
    const std::tm local = *std::localtime(&now);
    const int passed =
        (hours - local.tm_hour) * 3600 + (minutes - local.tm_min) * 60 + seconds - local.tm_sec;
    EXPECT_LE((passed + 86400) % 86400, 5) << hours << ":" << minutes << ":" << seconds;
}

// The two extents of a window, outer and inner.
static std::vector<unsigned long> Extents(const unsigned char* window)
{
    unsigned long width = 7, height = 8, innerWidth = 9, innerHeight = 10;
    const bool isMeasured = GetWindowRect(window, width, height),
               isFilled = GetClientRect(window, innerWidth, innerHeight);
    EXPECT_TRUE(isMeasured == IsWindowExisting(window) && isFilled == isMeasured);
    return {width, height, innerWidth, innerHeight};
}

TEST(Windows, AreMeasured)
{
    Window plain(false), framed(true);
    const unsigned char zero[sizeof(void*)] = {};
    const std::vector<unsigned long> none = {7, 8, 9, 10};
    EXPECT_TRUE(Extents(nullptr) == none && Extents(zero) == none && Extents(plain.noWindow) == none);
    if (plain.outerWidth == 0)
        GTEST_SKIP() << "no display";
    for (Window* const window : {&framed, &plain})
    {
        EXPECT_EQ(Extents(window->handle),
                  std::vector({window->outerWidth, window->outerHeight, 320UL, 200UL}));
        window->Close();
        EXPECT_EQ(Extents(window->handle), none);
    }
}
