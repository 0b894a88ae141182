#include "ZelUtil/ExceptionLog.h"

#include "system/Platform.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <ctime>

namespace
{

constexpr std::size_t kMessageSize = 1024;
constexpr std::size_t kTimeStampSize = 80; // room for five ints of any value and what separates them

// The precision keeps each text within the length of a message. In Windows-1252, 0xDC is a U and 0xF6 an o,
// both with two dots.
constexpr const char* kFormat = "%.1023s: %.1023s FILE = %.1023s LINE = %d";
constexpr const char* kMemberFormat = "%.1023s: %.1023s MEMBERLOG F\xDCR %.1023s  FILE = %.1023s LINE = %d";
constexpr const char* kParameterFormat =
    "%.1023s: %.1023s PARAMETERLOG F\xDCR %.1023s  FILE = %.1023s LINE = %d";
constexpr const char* kConstructionFormat = "%.1023s( %.1023s ): %.1023s FILE = %.1023s LINE = %d";
constexpr const char* kNoLogFile = "\n Fehler beim \xF6"
                                   "ffnen des Logfiles";

bool g_active = false;

__attribute__((format(printf, 1, 2))) void WriteDebugLog(const char* format, ...)
{
    if (!g_active)
        return;

    const std::tm now = zel::LocalTime();

    // echo = line end + message. entry = time stamp + message + line end.
    char echo[1 + kMessageSize] = "\n";
    char* const message = echo + 1;
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(message, kMessageSize, format, arguments);
    va_end(arguments);

    char entry[kTimeStampSize + kMessageSize];
    const int length = std::snprintf(entry, sizeof entry, "%d.%d  %d:%d:%d >> %s\n", now.tm_mday,
                                     now.tm_mon + 1, now.tm_hour, now.tm_min, now.tm_sec, message);

    std::FILE* const file = zel::OpenLogFile();
    if (file == nullptr)
    {
        std::fputs(kNoLogFile, stderr);
        return;
    }
    // A single write keeps the entries of several processes apart. The file is closed before the echo: in a
    // process without standard error it may have that descriptor, and the echo would go into it.
    std::fwrite(entry, 1, static_cast<std::size_t>(length), file);
    std::fclose(file);
    std::fputs(echo, stderr);
}

// What `%d` prints for an unsigned long of 32 bits, whatever its size here.
int SignedLine(unsigned long line)
{
    return static_cast<int>(static_cast<std::uint32_t>(line));
}

} // namespace

void EXCEPTION_LOG(BasicError error)
{
    WriteDebugLog(kFormat, error.getMethode().c_str(), error.getMsg().c_str(), error.getFile().c_str(),
                  error.getLine());
}

void EXCEPTION_LOG(MemberError error)
{
    WriteDebugLog(kMemberFormat, error.getMethode().c_str(), error.getMsg().c_str(),
                  error.getMember().c_str(), error.getFile().c_str(), error.getLine());
}

void EXCEPTION_LOG(ParameterError error)
{
    WriteDebugLog(kParameterFormat, error.getMethode().c_str(), error.getMsg().c_str(),
                  error.getParameter().c_str(), error.getFile().c_str(), error.getLine());
}

void EXCEPTION_LOG(const EStdException& error)
{
    WriteDebugLog(kFormat, error.getMethode().c_str(), error.getMsg().c_str(), error.getFile().c_str(),
                  SignedLine(error.getLine()));
}

void EXCEPTION_LOG(const EConstruction& error)
{
    WriteDebugLog(kConstructionFormat, error.getMethode().c_str(), error.getParameters().c_str(),
                  error.getMsg().c_str(), error.getFile().c_str(), SignedLine(error.getLine()));
}

void OSDependant::ActivateDebugLog(bool active)
{
    g_active = active;
}
