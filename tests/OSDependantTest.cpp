#include "ZelUtil/OSDependant.h"

#include "Pictures.h"
#include "System.h"

#include <atomic>
#include <chrono>
#include <cstring>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>
#include <thread>
#include <type_traits>

using namespace OSDependant;
using namespace test;

namespace
{

using Reader = std::unique_ptr<IFileAccess>;
using Access = IFileAccess::FileInterpretationModes;
static_assert(std::is_same_v<std::underlying_type_t<Access>, int>);

// A listing as one text, and the number that the call gave before it.
std::string Listed(const std::string& directory, const char* pattern)
{
    CStdStr<char>* list = nullptr;
    const unsigned long count = GetFileListInDirectory(directory, pattern, &list);
    const std::unique_ptr<CStdStr<char>[]> owned(list);
    std::vector<std::string> names(list, list + count);
    if (!kListsInByteOrder)
        std::sort(names.begin(), names.end());
    std::string text = std::to_string(count) + ":";
    for (const std::string& name : names)
        text += " " + name;
    return text;
}

std::string FileNameOf(const char* path)
{
    return std::filesystem::path(path).filename().string();
}

} // namespace

TEST(FileAccess, ReadsValuesInTheOrderOfTheFile)
{
    const TemporaryFolder folder;
    WriteFile(folder / "a", {0x12, 0x34, 0x56, 0x78, 0xFF, 0x80, 1, 2, 3, 4, 5, 6, 7, 8});
    const struct
    {
        int mode;
        std::uint32_t four;
        std::uint16_t two;
    } cases[] = {
        {0, 0x12345678, 0x1234}, {1, 0x78563412, 0x3412}, {2, 0x78563412, 0x3412}, {-1, 0x78563412, 0x3412}};
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.mode);
        const Reader reader(openFile(folder / "a", static_cast<Access>(c.mode)));
        EXPECT_EQ(reader->getInterpretationMode(), c.mode);
        EXPECT_EQ(reader->getLength(), 14U);

        int four = 0;
        unsigned int unsignedFour = 0;
        float real = 0;
        short two = 0;
        unsigned short unsignedTwo = 0;
        EXPECT_TRUE(reader->read(&four) && reader->skip(-4) && reader->read(&unsignedFour) &&
                    reader->skip(-4) && reader->read(&real) && reader->skip(-4) && reader->read(&two) &&
                    reader->skip(-2) && reader->read(&unsignedTwo));
        EXPECT_EQ(four, static_cast<int>(c.four));
        EXPECT_EQ(unsignedFour, c.four);
        EXPECT_EQ(std::memcmp(&real, &c.four, 4), 0);
        EXPECT_EQ(two, static_cast<short>(c.two));
        EXPECT_EQ(unsignedTwo, c.two);

        char one = 0;
        unsigned char unsignedOne = 0, block[4] = {}, eight[8];
        double value = 0;
        EXPECT_TRUE(reader->skip(2) && reader->read(&one) && reader->read(&unsignedOne) &&
                    reader->read(&value));
        EXPECT_EQ(one, static_cast<char>(0xFF));
        EXPECT_EQ(unsignedOne, 0x80);
        std::memcpy(eight, &value, 8);
        for (int i = 0; i < 8; ++i)
            EXPECT_EQ(eight[i], i + 1); // as stored in either mode
        EXPECT_TRUE(reader->skip(-14) && reader->read(block, 3UL));
        EXPECT_EQ(block[0] << 16 | block[1] << 8 | block[2], 0x123456);
        EXPECT_EQ(block[3], 0);

        EXPECT_FALSE(reader->skip(-4)); // before the start: nothing moves
        EXPECT_EQ(reader->getPosition(), 3U);
        reader->setInterpretationMode(c.mode == 0 ? IFileAccess::LittleEndian : IFileAccess::BigEndian);
        EXPECT_TRUE(reader->skip(-3) && reader->read(&two));
        EXPECT_EQ(two, static_cast<short>(c.mode == 0 ? 0x3412 : 0x1234));
    }
}

TEST(FileAccess, ShortReadsFailAtTheEndUnreversed)
{
    const TemporaryFolder folder;
    WriteFile(folder / "a", {1, 2, 3});
    WriteFile(folder / "empty", {});
    const Reader reader(openFile(folder / "a", IFileAccess::BigEndian));
    int four = 0x7F7F7F7F;
    short two = 0;
    double eight = 0;
    unsigned char bytes[4] = {};
    EXPECT_FALSE(reader->read(&four));
    std::memcpy(bytes, &four, 4);
    EXPECT_TRUE(bytes[0] == 1 && bytes[1] == 2 && bytes[2] == 3 && bytes[3] == 0x7F);
    EXPECT_EQ(reader->getPosition(), 3U);
    EXPECT_TRUE(reader->skip(-1));
    EXPECT_FALSE(reader->read(&two));
    EXPECT_FALSE(reader->read(&eight));
    EXPECT_FALSE(reader->read(bytes));
    EXPECT_FALSE(reader->read(bytes, 1UL));
    EXPECT_TRUE(reader->read(bytes, 0UL));

    EXPECT_FALSE(reader->skip(-4));
    EXPECT_EQ(reader->getPosition(), 3U);
    EXPECT_TRUE(reader->skip(7)); // behind the end is a position
    EXPECT_EQ(reader->getPosition(), 10U);
    EXPECT_EQ(reader->getLength(), 3U);
    EXPECT_EQ(reader->getPosition(), 10U);
    EXPECT_FALSE(reader->read(bytes));

    const Reader empty(openFile(folder / "empty", IFileAccess::BigEndian));
    EXPECT_EQ(empty->getLength(), 0U);
    EXPECT_TRUE(empty->skip(0) && empty->read(bytes, 0UL));
}

TEST(FileAccess, WhatCannotBeOpenedGivesAReaderOfNothing)
{
    const TemporaryFolder folder;
    for (const std::string& name : {folder / "missing", folder / "", std::string()})
    {
        const Reader reader(openFile(name, IFileAccess::LittleEndian));
        ASSERT_NE(reader, nullptr);
        double value = 0;
        short two = 0;
        char byte = 0;
        EXPECT_EQ(reader->getInterpretationMode(), IFileAccess::LittleEndian);
        EXPECT_FALSE(reader->skip(0));
        EXPECT_FALSE(reader->read(&value) || reader->read(&two) || reader->read(&byte) ||
                     reader->read(&byte, 0UL));
        EXPECT_TRUE(reader->getPosition() == 0 && reader->getLength() == 0);
    }
}

TEST(FileAccess, LengthsAndPositionsOfLargeFiles)
{
    const TemporaryFolder folder;
    for (const std::uint64_t size : {0x7FFFFFFFULL, 0x80000000ULL, 0xFFFFFFFFULL, 0x100000001ULL})
    {
        SCOPED_TRACE(size);
        WriteFile(folder / "a", {1});
        std::filesystem::resize_file(folder / "a", size);
        const Reader reader(openFile(folder / "a", IFileAccess::BigEndian));
        const bool fits = size <= std::numeric_limits<unsigned long>::max();
        for (std::uint64_t left = size; left != 0; left -= std::min<std::uint64_t>(left, 0x7FFFFFFF))
            EXPECT_TRUE(reader->skip(static_cast<long>(std::min<std::uint64_t>(left, 0x7FFFFFFF))));
        EXPECT_EQ(reader->getLength(), fits ? size : 0U);
        EXPECT_EQ(reader->getPosition(), fits ? size : 0U);
        char byte = 1;
        EXPECT_FALSE(reader->read(&byte));
        EXPECT_TRUE(reader->skip(-1) && reader->read(&byte));
        EXPECT_EQ(byte, 0);

        const File file(std::fopen((folder / "a").c_str(), "rb"), std::fclose);
        std::getc(file.get());
        long length = 5;
        const bool told = size <= static_cast<unsigned long>(std::numeric_limits<long>::max());
        EXPECT_EQ(GetFileLength(file.get(), length), told);
        EXPECT_EQ(length, told ? static_cast<long>(size) : -1);
        EXPECT_EQ(std::ftell(file.get()), 1);
    }

    const File device(std::fopen(kNullDevice, "rb"), std::fclose);
    for (std::FILE* const file : {device.get(), static_cast<std::FILE*>(nullptr)})
    {
        long length = 5;
        EXPECT_FALSE(GetFileLength(file, length));
        EXPECT_EQ(length, -1);
    }
}

TEST(Folders, AreCreatedOneByOne)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(CreateDir(folder / "a", nullptr));
    EXPECT_TRUE(std::filesystem::is_directory(folder / "a"));
    EXPECT_FALSE(CreateDir(folder / "a", nullptr));
    EXPECT_FALSE(CreateDir(folder / "b/c", nullptr));
    EXPECT_TRUE(CreateDir(folder / "a/b", &folder));
    WriteFile(folder / "file", {});
    EXPECT_FALSE(CreateDir(folder / "file", nullptr));
    EXPECT_FALSE(CreateDir("", nullptr));
}

TEST(Folders, AreListedByPattern)
{
    const TemporaryFolder folder;
    for (const char* name : {"a.txt", "B.TXT", "c.text", "d", "e.tx", ".hid", "two.dots.txt", "x y.t"})
        WriteFile(folder / name, {1});
    ASSERT_TRUE(CreateDir(folder / "sub", nullptr) && CreateDir(folder / "sub.txt", nullptr));
    WriteFile(folder / "sub/deep.txt", {1});
    const std::string root = folder / "", bare = root.substr(0, root.size() - 1);
    const std::string whole = "10: .hid B.TXT a.txt c.text d e.tx sub sub.txt two.dots.txt x y.t";

    const struct
    {
        const char* pattern;
        std::string names;
    } cases[] = {
        {"*", whole},
        {"*.*", "8: .hid B.TXT a.txt c.text e.tx sub.txt two.dots.txt x y.t"},
        {"*.txt", "4: B.TXT a.txt sub.txt two.dots.txt"},
        {"*.t*", "6: B.TXT a.txt c.text e.tx sub.txt two.dots.txt"},
        {"*.tx?", "4: B.TXT a.txt sub.txt two.dots.txt"},
        {"*.t*t", "5: B.TXT a.txt c.text sub.txt two.dots.txt"},
        {"?.TXT", "2: B.TXT a.txt"},
        {"s*", "2: sub sub.txt"},
        {"b.txt", "1: B.TXT"},
        {"*.dots.*", "1: two.dots.txt"},
        {"sub\\*", "1: deep.txt"},
        {"sub/*.TXT", "1: deep.txt"},
        {"sub", "1: sub"},
        {"*.zip", "0:"},
        {"nothing", "0:"},
        {"", "0:"},
        {"none\\*", "0:"},
        {"sub*\\*", "0:"},
        {"*.", "0:"}, // wants the extension "."
    };
    for (const auto& c : cases)
        EXPECT_EQ(Listed(bare, c.pattern), c.names) << c.pattern;
    EXPECT_EQ(Listed(bare + "\\", "*"), whole);
    EXPECT_EQ(Listed(root, "*"), whole); // a "/" at the end joins nothing, and does no harm
    EXPECT_EQ(Listed(folder / "missing", "*"), "0:");
    EXPECT_EQ(Listed(folder / "d", "*"), "0:");

    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(bare);
    EXPECT_EQ(Listed("", "*.text"), "1: c.text");
    EXPECT_EQ(Listed("sub", "*"), "1: deep.txt");
    std::filesystem::current_path(before);

    CStdStr<char> untouched, *list = &untouched;
    EXPECT_EQ(GetFileListInDirectory(bare, "*.zip", &list), 0U);
    EXPECT_EQ(list, &untouched);
}

TEST(Libraries, AreLoadedUsedAndFreed)
{
    const std::string name = FileNameOf(SAMPLE_LIBRARY);
    CStdStr<char> path = "as it was";
    EXPECT_FALSE(GetModulePath(name, path, 1000)); // the file is there, but not loaded
    EXPECT_EQ(path, "as it was");
    EXPECT_EQ(LoadLib(std::string(SAMPLE_LIBRARY) + ".no"), nullptr);
    EXPECT_EQ(LoadLib(SAMPLE_DATA), nullptr);
    EXPECT_EQ(LoadLib(SAMPLE_DATA "/sheet.ini"), nullptr);
    EXPECT_EQ(LoadLib(""), nullptr);

    for (int round = 0; round < 3; ++round)
    {
        char* const library = LoadLib(SAMPLE_LIBRARY);
        ASSERT_NE(library, nullptr);
        ASSERT_EQ(LoadLib(SAMPLE_LIBRARY), library);
        auto* const add = reinterpret_cast<int (*)(int, int)>(GetFunctionReference(library, "SampleAdd"));
        auto* const count = reinterpret_cast<int (*)()>(GetFunctionReference(library, "SampleCount"));
        ASSERT_TRUE(add != nullptr && count != nullptr);
        EXPECT_EQ(add(40, 2), 42);
        EXPECT_EQ(count(), 1); // it was gone in between
        for (const char* wrong : {"sampleadd", "", "SampleAdd "})
            EXPECT_EQ(GetFunctionReference(library, wrong), nullptr) << wrong;

        ASSERT_TRUE(GetModulePath(name, path, 1000));
        EXPECT_TRUE(std::filesystem::equivalent(path.c_str(), SAMPLE_LIBRARY)) << path;
        EXPECT_TRUE(std::filesystem::path(path.c_str()).is_absolute()) << path;
        EXPECT_EQ(FileNameOf(path.c_str()), name);
        const CStdStr<char> whole = path;
        EXPECT_TRUE(GetModulePath(whole, path, 1000));
        for (const unsigned size :
             {2U, 9U, static_cast<unsigned>(whole.size()), static_cast<unsigned>(whole.size()) + 1,
              std::numeric_limits<unsigned>::max()})
        {
            EXPECT_TRUE(GetModulePath(name, path, size)) << size;
            EXPECT_EQ(path, whole.substr(0, size - 1)) << size;
        }
        EXPECT_FALSE(GetModulePath(name, path, 1));
        EXPECT_FALSE(GetModulePath(name, path, 0));
        EXPECT_FALSE(GetModulePath(name + "x", path, 1000));
        EXPECT_FALSE(GetModulePath(name.substr(0, name.size() - 1), path, 1000));

        EXPECT_TRUE(FreeLib(library));
        EXPECT_EQ(count(), 2); // one load is still there
        EXPECT_TRUE(FreeLib(library));
        EXPECT_FALSE(FreeLib(library));
        EXPECT_EQ(GetFunctionReference(library, "SampleAdd"), nullptr);
        EXPECT_FALSE(GetModulePath(name, path, 1000));
    }
    std::string foreign(4096, '\1');
    EXPECT_FALSE(FreeLib(foreign.data()));
    EXPECT_EQ(GetFunctionReference(foreign.data(), "SampleAdd"), nullptr);
    EXPECT_FALSE(FreeLib(nullptr));
    EXPECT_EQ(GetFunctionReference(nullptr, "SampleAdd"), nullptr);

    // Loaded by a path that leads elsewhere from another folder.
    const TemporaryFolder folder;
    char* const library = LoadLib("./" + std::filesystem::relative(SAMPLE_LIBRARY).string());
    ASSERT_NE(library, nullptr);
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder / "");
    EXPECT_TRUE(GetModulePath(name, path, 1000));
    const CStdStr<char> whole = path;
    EXPECT_TRUE(GetModulePath(whole, path, 1000));
    std::filesystem::current_path(before);
    EXPECT_TRUE(std::filesystem::path(path.c_str()).is_absolute()) << path;
    EXPECT_TRUE(std::filesystem::equivalent(path.c_str(), SAMPLE_LIBRARY)) << path;
    EXPECT_TRUE(FreeLib(library));

    const std::string program = testing::internal::GetArgvs()[0];
    EXPECT_TRUE(GetModulePath(FileNameOf(program.c_str()), path, 1000));
    EXPECT_TRUE(std::filesystem::equivalent(path.c_str(), program)) << path;
}

TEST(Threads, RunEndAndLeaveNothing)
{
    EXPECT_EQ(beginThread(nullptr, nullptr), 0U);

    static std::atomic<int> ended;
    ended = 0;
    const auto routine = [](void* starter) -> unsigned long
    {
        ended += std::this_thread::get_id() != *static_cast<const std::thread::id*>(starter);
        return 0;
    };
    std::thread::id starter = std::this_thread::get_id();
    long before = 0;
    for (int i = 1; i <= 10000; ++i)
    {
        ASSERT_NE(beginThread(routine, &starter), 0U);
        for (int wait = 0; ended != i && wait < 10000; ++wait)
            threadSleep(wait < 1000 ? 0 : 1);
        ASSERT_EQ(ended, i);
        if (i == 200)
            before = ThreadRemains();
    }
    EXPECT_LE(ThreadRemains(), before + 100);
}

TEST(Time, OfDayAndSpent)
{
    const auto start = std::chrono::steady_clock::now();
    threadSleep(1001);
    const auto spent = std::chrono::steady_clock::now() - start;
    EXPECT_TRUE(spent >= std::chrono::seconds(1) && spent < std::chrono::seconds(8));

    unsigned short seconds = 99, minutes = 99, hours = 99;
    std::time_t before = 0, after = 1;
    while (before != after) // within one second
    {
        before = std::time(nullptr);
        getTime(&seconds, &minutes, &hours);
        after = std::time(nullptr);
    }
    const std::tm expected = *std::localtime(&before);
    EXPECT_TRUE(hours == expected.tm_hour && minutes == expected.tm_min && seconds == expected.tm_sec)
        << hours << ":" << minutes << ":" << seconds;
}

TEST(Windows, AreMeasured)
{
    Window window(320, 200, true), plain(50, 40, false);
    unsigned long width = 7, height = 8;
    const unsigned char none[sizeof(void*)] = {};
    for (const unsigned char* wrong : {static_cast<const unsigned char*>(nullptr), none})
    {
        EXPECT_FALSE(IsWindowExisting(wrong));
        EXPECT_FALSE(GetWindowRect(wrong, width, height));
        EXPECT_FALSE(GetClientRect(wrong, width, height));
    }
    EXPECT_TRUE(width == 7 && height == 8);
    if (!Window::ArePossible())
        GTEST_SKIP() << "no display";

    EXPECT_TRUE(IsWindowExisting(window.Handle()));
    EXPECT_TRUE(GetClientRect(window.Handle(), width, height));
    EXPECT_TRUE(width == 320 && height == 200) << width << " " << height;
    for (const Window* const framed : {&window, &window, &plain})
    {
        EXPECT_TRUE(GetWindowRect(framed->Handle(), width, height));
        EXPECT_TRUE(width == framed->FrameWidth() && height == framed->FrameHeight())
            << width << " " << height;
    }

    window.Close();
    EXPECT_FALSE(IsWindowExisting(window.Handle()));
    EXPECT_FALSE(GetWindowRect(window.Handle(), width, height));
    EXPECT_FALSE(GetClientRect(window.Handle(), width, height));
    EXPECT_TRUE(width == plain.FrameWidth() && height == plain.FrameHeight());
}
