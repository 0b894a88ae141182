#include "Failing.h"
#include "Pictures.h"
#include "System.h"

#include "ZelUtil/ExceptionLog.h"
#include "ZelUtil/OSDependant.h"

#include <ctime>
#include <gtest/gtest.h>

using namespace test;

// Stands in for zel::LocalTime in this program. It is always the leap second after 9:07:59 on 5 March.
extern "C" std::tm __wrap__ZN3zel9LocalTimeEv()
{
    constexpr std::time_t kMoment = 5476020; // 9:07:00 in 1970
    std::tm now = *std::gmtime(&kMoment);
    now.tm_sec = 60;
    return now;
}

template <typename Error>
static std::string Echo(const Error& error)
{
    testing::internal::CaptureStderr();
    EXCEPTION_LOG(error);
    return testing::internal::GetCapturedStderr();
}

// One test, as there is one log. What was there before, or before a crash, stands aside meanwhile.
TEST(ExceptionLog, KeepsEntriesInItsFileAndRepeatsThem)
{
    LockMachine();
    const std::string aside = std::string(kLogFile) + ".aside", stamp = "5.3  9:7:60 >> ";
    std::error_code none;
    if (!std::filesystem::exists(aside))
        std::filesystem::rename(kLogFile, aside, none);
    std::filesystem::remove_all(kLogFile);
    const BasicError error("m", "t", "f", 1);
    EXPECT_TRUE(Echo(error).empty() &&
                !std::filesystem::exists(kLogFile)); // it is off when the program starts
    WriteFile(kLogFile, {'o', 'l', 'd', '\n'});
    std::string entries = "old\n";
    const auto hasEntries = [&](const std::string& added)
    {
        std::ifstream file(kLogFile); // as text
        return std::string(std::istreambuf_iterator<char>(file), {}) == (entries += added);
    };
    const auto check = [&](const auto& caught, const std::string& message)
    {
        EXPECT_EQ(Echo(caught), "\n" + message);
        EXPECT_TRUE(hasEntries(stamp + message + "\n")) << message;
    };
    OSDependant::ActivateDebugLog(true);
    check(BasicError("A::f", "bad", "a.cpp", -7), "A::f: bad FILE = a.cpp LINE = -7");
    check(MemberError("A::f", "bad", "m_x", "a", 12), "A::f: bad MEMBERLOG F\xDCR m_x  FILE = a LINE = 12");
    check(ParameterError("A::f", "bad", "x", "a", 12), "A::f: bad PARAMETERLOG F\xDCR x  FILE = a LINE = 12");
    check(EStdException("B", "%d 100%% %s%n", "b", 4294967295UL), "B: %d 100%% %s%n FILE = b LINE = -1");
    check(EOutOfBounds("B", "", "", 2147483648UL), "B:  FILE =  LINE = -2147483648");
    check(EConstruction("C::C", "1, 2", "no", "c", 3), "C::C( 1, 2 ): no FILE = c LINE = 3");
    for (const std::size_t length : {1002U, 1003U, 1004U, 5000U}) // 21 characters stand around
    {
        const std::string text(length, 'x');
        check(BasicError("m", text, "f", 1), ("m: " + text + " FILE = f LINE = 1").substr(0, 1023));
    }
    OSDependant::ActivateDebugLog(false);
    EXPECT_TRUE(Echo(error).empty() && hasEntries(""));
    OSDependant::ActivateDebugLog(true);

    // Where there is no standard error, the file gets its descriptor. No memory of the program's is needed.
    const EConstruction construction("m", "p", "t", "f", 1);
    const int saved = dup(2);
    close(2);
    g_plan = {Fault::AllAllocations, 0};
    EXCEPTION_LOG(construction);
    EXCEPTION_LOG(static_cast<const EStdException&>(construction));
    g_plan = {};
    dup2(saved, 2);
    close(saved);
    std::clearerr(stderr);
    EXPECT_TRUE(hasEntries(stamp + "m( p ): t FILE = f LINE = 1\n" + stamp + "m: t FILE = f LINE = 1\n"));
    std::filesystem::remove(kLogFile);

    const auto isRefused = [&]
    {
        return Echo(error) == "\n Fehler beim \xF6"
                              "ffnen des Logfiles";
    };
    std::filesystem::create_directory(kLogFile);
    EXPECT_TRUE(isRefused());
    std::filesystem::remove(kLogFile);
    if (MakeFifo(kLogFile)) // such systems have links, too
    {
        EXPECT_TRUE(isRefused()); // at once, although nobody reads
        File reader(std::fopen(kLogFile, "r+"), std::fclose);
        EXPECT_TRUE(isRefused());
        reader.reset();
        std::filesystem::remove(kLogFile);
        const TemporaryFolder folder;
        std::filesystem::create_symlink(folder / "target", kLogFile);
        EXPECT_TRUE(isRefused() && !std::filesystem::exists(folder / "target"));
        WriteFile(folder / "target", {'a'});
        EXPECT_TRUE(isRefused() && ReadFile(folder / "target") == Bytes{'a'});
        std::filesystem::remove(kLogFile);
    }
    std::filesystem::rename(aside, kLogFile, none);
    OSDependant::ActivateDebugLog(false);

    unsigned short seconds = 0, minutes = 0, hours = 0;
    OSDependant::getTime(&seconds, &minutes, &hours);
    EXPECT_TRUE(seconds == 59 && minutes == 7 && hours == 9); // which knows no leap seconds
}
