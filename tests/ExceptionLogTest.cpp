#include "Failing.h"
#include "Pictures.h"
#include "System.h"

#include "ZelUtil/ExceptionLog.h"
#include "ZelUtil/OSDependant.h"

#include <cstdlib>
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

// One test, as there is one log. A log that exists already is moved aside and restored at the end; so is one
// that a crashed run has left aside.
TEST(ExceptionLog, KeepsEntriesInItsFileAndRepeatsThem)
{
    const auto echo = [](const auto& error)
    {
        testing::internal::CaptureStderr();
        EXCEPTION_LOG(error);
        return testing::internal::GetCapturedStderr();
    };
    const std::string log = LockLog(), aside = log + ".aside", stamp = "5.3  9:7:60 >> ";
    std::error_code none;
    if (!std::filesystem::exists(aside))
        std::filesystem::rename(log, aside, none);
    std::filesystem::remove_all(log);
    const EConstruction error("m", "p", "t", "f", 1);
    EXPECT_TRUE(echo(error).empty() && !std::filesystem::exists(log)); // it is off at first
    WriteFile(log, {'o', 'l', 'd', '\n'});
    std::string entries = "old\n";
    const auto check = [&](const auto& caught, const std::string& message)
    {
        EXPECT_EQ(echo(caught), "\n" + message);
        std::ifstream file(log); // as text
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), entries += stamp + message + "\n");
    };
    OSDependant::ActivateDebugLog(true);
    check(BasicError("A::f", "bad", "a.cpp", -7), "A::f: bad FILE = a.cpp LINE = -7");
    check(MemberError("A::f", "bad", "m_x", "a", 12), "A::f: bad MEMBERLOG F\xDCR m_x  FILE = a LINE = 12");
    check(ParameterError("A::f", "bad", "x", "a", 12), "A::f: bad PARAMETERLOG F\xDCR x  FILE = a LINE = 12");
    check(EStdException("B", "%d 100%% %s%n", "b", 4294967295UL), "B: %d 100%% %s%n FILE = b LINE = -1");
    check(EOutOfBounds("B", "", "", 2147483648UL), "B:  FILE =  LINE = -2147483648");
    check(BasicError("m", std::string(5000, 'x'), "f", 1), "m: " + std::string(1020, 'x'));
    OSDependant::ActivateDebugLog(false);
    EXPECT_EQ(echo(error), "");
    OSDependant::ActivateDebugLog(true);

    // Without standard error the log file gets descriptor 2. Logging needs no memory.
    const int saved = dup(2);
    close(2);
    g_plan = {0, false, true};
    EXCEPTION_LOG(error);
    g_plan = {};
    dup2(saved, 2);
    close(saved);
    std::clearerr(stderr);
    entries += stamp + "m( p ): t FILE = f LINE = 1\n";
    check(error, "m( p ): t FILE = f LINE = 1");
    std::filesystem::remove(log);

    const char* const refusal = "\n Fehler beim \xF6\x66\x66nen des Logfiles";
    std::filesystem::create_directory(log);
    EXPECT_EQ(echo(error), refusal);
    std::filesystem::remove(log);
    if (std::system(("mkfifo " + log).c_str()) == 0) // not on Windows
    {
        EXPECT_EQ(echo(error), refusal); // at once, although nobody reads
        File reader(std::fopen(log.c_str(), "r+"), std::fclose);
        EXPECT_EQ(echo(error), refusal);
        reader.reset();
        std::filesystem::remove(log);
        const TemporaryFolder folder;
        WriteFile(folder / "target", {'a'});
        std::filesystem::create_symlink(folder / "target", log);
        EXPECT_TRUE(echo(error) == refusal && ReadFile(folder / "target") == Bytes{'a'});
        std::filesystem::remove(log);
    }
    std::filesystem::rename(aside, log, none);
    OSDependant::ActivateDebugLog(false);

    unsigned short seconds = 0, minutes = 0, hours = 0;
    OSDependant::getTime(&seconds, &minutes, &hours);
    EXPECT_TRUE(seconds == 59 && minutes == 7 && hours == 9); // second 60 is reported as 59
}
