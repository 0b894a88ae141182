#include "DebugLog.h"

#include "ZelUtil/OSDependant.h"

#include <ctime>

using namespace test;

namespace
{

std::tm g_now; // what the program's clock says

std::tm Moment(int day, int month, int hour, int minute, int second)
{
    std::tm moment = {};
    moment.tm_mday = day;
    moment.tm_mon = month - 1;
    moment.tm_hour = hour;
    moment.tm_min = minute;
    moment.tm_sec = second;
    return moment;
}

} // namespace

// Stands in for zel::LocalTime in this program.
extern "C" std::tm __wrap__ZN3zel9LocalTimeEv();

std::tm __wrap__ZN3zel9LocalTimeEv()
{
    return g_now;
}

TEST(ExceptionLog, EntriesStandInFileAndEcho)
{
    const Log log;
    g_now = Moment(5, 3, 9, 7, 2);
    const BasicError basic("A::f", "bad", "a.cpp", -7);
    EXPECT_EQ(Echo(basic), ""); // off from the start
    EXPECT_FALSE(std::filesystem::exists(kLogFile));

    OSDependant::ActivateDebugLog(true);
    EXPECT_EQ(Echo(basic), "\nA::f: bad FILE = a.cpp LINE = -7");
    EXPECT_EQ(Echo(MemoryError("A::g", "none", "a", 1)), "\nA::g: none FILE = a LINE = 1");
    EXPECT_EQ(Echo(MemberError("A::f", "bad value", "m_x", "a", 12)),
              "\nA::f: bad value MEMBERLOG F\xDCR m_x  FILE = a LINE = 12");
    EXPECT_EQ(Echo(ParameterError("A::f", "bad value", "x", "a", 12)),
              "\nA::f: bad value PARAMETERLOG F\xDCR x  FILE = a LINE = 12");
    g_now = Moment(1, 1, 0, 0, 0);
    EXPECT_EQ(Echo(EStdException("B", "%d 100%% %s%n", "b", 4294967295UL)),
              "\nB: %d 100%% %s%n FILE = b LINE = -1");
    EXPECT_EQ(Echo(EOutOfBounds("B", "", "", 2147483648UL)), "\nB:  FILE =  LINE = -2147483648");
    g_now = Moment(31, 12, 23, 59, 60);
    EXPECT_EQ(Echo(EConstruction("C::C", "1, 2", "no", "c", 3)), "\nC::C( 1, 2 ): no FILE = c LINE = 3");
    OSDependant::ActivateDebugLog(false);
    EXPECT_EQ(Echo(basic), "");

    EXPECT_EQ(log.Text(), "5.3  9:7:2 >> A::f: bad FILE = a.cpp LINE = -7\n"
                          "5.3  9:7:2 >> A::g: none FILE = a LINE = 1\n"
                          "5.3  9:7:2 >> A::f: bad value MEMBERLOG F\xDCR m_x  FILE = a LINE = 12\n"
                          "5.3  9:7:2 >> A::f: bad value PARAMETERLOG F\xDCR x  FILE = a LINE = 12\n"
                          "1.1  0:0:0 >> B: %d 100%% %s%n FILE = b LINE = -1\n"
                          "1.1  0:0:0 >> B:  FILE =  LINE = -2147483648\n"
                          "31.12  23:59:60 >> C::C( 1, 2 ): no FILE = c LINE = 3\n");
    unsigned short seconds = 0, minutes = 0, hours = 0;
    OSDependant::getTime(&seconds, &minutes, &hours);
    EXPECT_TRUE(seconds == 59 && minutes == 59 && hours == 23); // no leap second here
}

TEST(ExceptionLog, MessagesEndAfter1023Characters)
{
    g_now = Moment(31, 12, 23, 59, 59);
    for (const int length : {1022, 1023, 1024, 5000})
    {
        const Log log;
        OSDependant::ActivateDebugLog(true);
        const std::string fixed = "m:  FILE = f LINE = 1"; // and the message between
        const std::string text(static_cast<std::size_t>(length) - fixed.size(), 'x');
        const std::string message = ("m: " + text + " FILE = f LINE = 1").substr(0, 1023);
        EXPECT_EQ(Echo(BasicError("m", text, "f", 1)), "\n" + message) << length;
        EXPECT_EQ(log.Text(), "31.12  23:59:59 >> " + message + "\n") << length;
    }
}

TEST(ExceptionLog, SaysWhenItCannotOpenTheFile)
{
    const BasicError error("m", "t", "f", 1);
    {
        const Log log;
        OSDependant::ActivateDebugLog(true);
        std::filesystem::create_directory(kLogFile);
        EXPECT_EQ(Echo(error), kNoLogFile);
    }

    {
        const Log log;
        OSDependant::ActivateDebugLog(true);
        if (!MakeFifo(kLogFile))
            return;                         // no such things here, nor links that would be followed
        EXPECT_EQ(Echo(error), kNoLogFile); // at once, without a reader
        const File reader(std::fopen(kLogFile, "r+"), std::fclose);
        EXPECT_EQ(Echo(error), kNoLogFile);
    }
    const Log log;
    OSDependant::ActivateDebugLog(true);
    const TemporaryFolder folder;
    WriteFile(folder / "target", {'a'});
    std::filesystem::create_symlink(folder / "target", kLogFile);
    EXPECT_EQ(Echo(error), kNoLogFile);
    EXPECT_EQ(ReadFile(folder / "target"), Bytes{'a'});
    std::filesystem::remove(folder / "target");
    EXPECT_EQ(Echo(error), kNoLogFile);
    EXPECT_FALSE(std::filesystem::exists(folder / "target"));
}

TEST(ExceptionLog, AppendsAndKeepsTheEchoOutOfTheFile)
{
    const Log log;
    g_now = Moment(1, 2, 3, 4, 5);
    OSDependant::ActivateDebugLog(true);
    WriteFile(kLogFile, {'o', 'l', 'd', '\n'});

    // Without a standard error the file gets its descriptor.
    std::fflush(stderr);
    const int saved = dup(2);
    close(2);
    EXCEPTION_LOG(BasicError("m", "t", "f", 1));
    EXCEPTION_LOG(BasicError("m", "t", "f", 2));
    dup2(saved, 2);
    close(saved);
    std::clearerr(stderr);
    EXPECT_EQ(log.Text(),
              "old\n1.2  3:4:5 >> m: t FILE = f LINE = 1\n1.2  3:4:5 >> m: t FILE = f LINE = 2\n");
}
