#pragma once

#include "Pictures.h"
#include "System.h"

#include "ZelUtil/ExceptionLog.h"

#include <gtest/gtest.h>

namespace test
{

/// Has the log to itself: one that was there stands aside.
class Log
{
public:
    Log() { std::filesystem::rename(kLogFile, m_aside, m_none); }

    ~Log()
    {
        OSDependant::ActivateDebugLog(false);
        std::filesystem::remove_all(kLogFile);
        std::filesystem::rename(m_aside, kLogFile, m_none);
    }

    std::string Text() const
    {
        std::ifstream file(kLogFile); // as text
        return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }

private:
    const ProcessLock m_lock;
    const std::string m_aside = std::string(kLogFile) + ".aside";
    std::error_code m_none; // there was no log
};

/// What an entry writes on standard error.
template <typename Error>
std::string Echo(const Error& error)
{
    testing::internal::CaptureStderr();
    EXCEPTION_LOG(error);
    return testing::internal::GetCapturedStderr();
}

inline const char* const kNoLogFile = "\n Fehler beim \xF6"
                                      "ffnen des Logfiles";

} // namespace test
