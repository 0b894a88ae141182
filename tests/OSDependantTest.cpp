#include "ZelUtil/OSDependant.h"

#include "Pictures.h"
#include "System.h"

#include <atomic>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <gtest/gtest.h>

using namespace OSDependant;
using namespace test;
using Reader = std::unique_ptr<IFileAccess>;

TEST(FileAccess, ReadsValuesInEitherOrder)
{
    const TemporaryFolder folder;
    const Bytes file = RandomBytes(29);
    WriteFile(folder / "a", file);
    for (const int mode : {1, 0, 2, -1})
    {
        const Reader reader(openFile(folder / "a", IFileAccess::FileInterpretationModes(1 - mode)));
        EXPECT_EQ(reader->getInterpretationMode(), 1 - mode);
        reader->setInterpretationMode(IFileAccess::FileInterpretationModes(mode));
        Bytes taken, expected(file.begin(), file.begin() + 26);
        const auto take = [&](auto value)
        {
            EXPECT_TRUE(reader->read(&value));
            const auto* const bytes = reinterpret_cast<const unsigned char*>(&value);
            taken.insert(taken.end(), bytes, bytes + sizeof value);
        };
        const auto takeAll = [&](auto... values) { (take(values), ...); };
        takeAll(0.0, 0, 0U, 0.0F, std::int16_t{0}, std::uint16_t{0}, '0', std::uint8_t{0});
        for (const int at : {8, 12, 16, 20, 22})
            std::reverse(expected.begin() + at, expected.begin() + at + (mode != 0 ? 0 : at < 20 ? 4 : 2));
        EXPECT_EQ(taken, expected);

        unsigned char block[4] = {};
        int left = 0; // three bytes are left
        EXPECT_TRUE(!reader->read(&left) && std::memcmp(&left, file.data() + 26, 3) == 0);
        EXPECT_TRUE(reader->skip(-27) && reader->read(block, 3UL) && block[2] == file[4] && block[3] == 0);
        EXPECT_TRUE(!reader->skip(-6) && reader->getLength() == 29 && reader->getPosition() == 5);
        EXPECT_TRUE(reader->read(block, 0UL) && reader->skip(25) && !reader->read(block, 1UL));
    }
}

TEST(FileAccess, FailsWithoutAFile)
{
    const TemporaryFolder folder;
    const std::string pipe = folder / "pipe";
    // Windows has no such pipes.
    const File ends(std::system(("mkfifo " + pipe).c_str()) == 0 ? std::fopen(pipe.c_str(), "r+") : nullptr,
                    std::fclose);
    const bool hasPipe =
        ends != nullptr && std::fputc('a', ends.get()) == 'a' && std::fflush(ends.get()) == 0;
    for (const std::string& name : {folder / "missing", folder / "", std::string(), pipe})
    {
        const Reader reader(openFile(name, IFileAccess::LittleEndian));
        char byte = 0;
        const bool isPipe = hasPipe && name == pipe;
        EXPECT_FALSE(reader->skip(0) || reader->read(&byte, 0UL) != isPipe || reader->read(&byte) != isPipe);
        EXPECT_EQ(reader->getPosition() + reader->getLength(), 0U); // both are unknown in a pipe
    }
    for (std::FILE* const file : {ends.get(), static_cast<std::FILE*>(nullptr)})
    {
        long length = 5;
        EXPECT_TRUE(!GetFileLength(file, length) && length == -1);
    }
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
        const std::uint64_t expected = size <= ULONG_MAX ? size : 0;
        char byte = 1;
        EXPECT_TRUE(reader->getLength() == expected && reader->getPosition() == expected) << size;
        EXPECT_TRUE(!reader->read(&byte) && reader->skip(-1) && reader->read(&byte) && byte == 0) << size;

        const File file(std::fopen((folder / "a").c_str(), "rb"), std::fclose);
        long length = std::getc(file.get());
        EXPECT_TRUE(GetFileLength(file.get(), length) == (size <= LONG_MAX) && std::ftell(file.get()) == 1);
        EXPECT_EQ(length, size <= LONG_MAX ? static_cast<long>(size) : -1);
    }
}

TEST(Folders, AreCreatedAndListed)
{
    const TemporaryFolder folder;
    const auto home = std::filesystem::current_path();
    std::filesystem::current_path(folder / "");
    EXPECT_TRUE(CreateDir("sub", &folder) && CreateDir(folder / "sub.txt", nullptr));
    for (const char* name : {"a.txt", "B.TXT", "c.text", "d", "sub/deep.txt"})
        WriteFile(name, {1});
    for (const char* name : {"sub", "d", "none/c", ""})
        EXPECT_FALSE(CreateDir(name, nullptr)) << name;

    const std::string root = folder / "";
    const std::vector<std::string> names = {"B.TXT", "a.txt", "c.text", "d", "deep.txt", "sub", "sub.txt"};
    const std::string cases[][3] = {
        {root, "*", "xxxx-xx"},       {root + "\\", "*", "xxxx-xx"}, {"", "*", "xxxx-xx"},
        {"", "*.*", "xxx---x"},       {"", "*.t*", "xxx---x"},       {"", "?.TXT", "xx-----"},
        {"", "*.", "-------"},        {"", "sub\\*", "----x--"},     {"sub", "*", "----x--"},
        {"", "sub/*.TXT", "----x--"}, {"d", "*", "-------"},         {"none", "*", "-------"},
        {"", "", "-------"}};
    for (const auto& [directory, pattern, marks] : cases) // an x for each of the names that it lists
    {
        std::vector<std::string> expected;
        for (std::size_t i = 0; i < names.size(); ++i)
            expected.insert(expected.end(), marks[i] == 'x' ? 1 : 0, names[i]);
        CStdStr<char> untouched, *list = &untouched;
        const unsigned long count = GetFileListInDirectory(directory, pattern, &list);
        EXPECT_EQ(list == &untouched, count == 0);
        const std::unique_ptr<CStdStr<char>[]> owned(count == 0 ? nullptr : list);
        if (std::filesystem::path::preferred_separator == '\\') // Windows has an order of its own
            std::sort(list, list + count);
        EXPECT_EQ(std::vector<std::string>(list, list + count), expected) << directory << " " << pattern;
    }
    std::filesystem::current_path(home);
}

// A stack that is not released adds more than 100 characters to the list of mapped memory. Where that list
// cannot be read, its size counts as 0, and a stack that stays is not noticed.
TEST(Threads, RunEndAndLeaveNothing)
{
    EXPECT_EQ(beginThread(nullptr, nullptr), 0U);
    std::atomic<unsigned long> ended = 0;
    const auto routine = [](void* count) { return ++*static_cast<std::atomic<unsigned long>*>(count); };
    std::size_t before = 0;
    for (unsigned long i = 1; i <= 300; ++i)
    {
        ASSERT_NE(beginThread(routine, &ended), 0U);
        while (ended != i)
            threadSleep(1);
        before = i == 50 ? ReadFile("/proc/self/maps").size() : before;
    }
    EXPECT_LE(ReadFile("/proc/self/maps").size(), before + 12500);
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
    const int passed = ((hours - local.tm_hour) * 60 + minutes - local.tm_min) * 60 + seconds - local.tm_sec;
    EXPECT_LE((passed + 86400) % 86400, 5) << hours << ":" << minutes << ":" << seconds;
}

TEST(Windows, AreMeasured)
{
    const Window plain(false), framed(true);
    if (plain.outerWidth == 0)
        GTEST_SKIP() << "no display";
    unsigned long width = 7, height = 8, innerWidth = 9, innerHeight = 10;
    const unsigned char zero[sizeof(void*)] = {}, *const nothing = nullptr;
    for (const unsigned char* const none : {nothing, zero, plain.noWindow})
        EXPECT_FALSE(IsWindowExisting(none) || GetWindowRect(none, width, height) ||
                     GetClientRect(none, width, height));
    EXPECT_TRUE(width == 7 && height == 8);
    for (const Window* const window : {&plain, &framed})
    {
        EXPECT_TRUE(IsWindowExisting(window->handle) && GetWindowRect(window->handle, width, height) &&
                    GetClientRect(window->handle, innerWidth, innerHeight));
        EXPECT_TRUE(innerWidth == 320 && innerHeight == 200) << innerWidth << " x " << innerHeight;
        EXPECT_TRUE(width == window->outerWidth && height == window->outerHeight) << width << " x " << height;
    }
}
