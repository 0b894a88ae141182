#include "ZelUtil/Errors.h"

BasicError::BasicError(const CStdStr<char>& methode, const CStdStr<char>& msg, const CStdStr<char>& file,
                       int line)
    : m_methode(methode), m_msg(msg), m_file(file), m_line(line)
{
}

BasicError::BasicError() : BasicError("UNDEF", "UNDEF", "UNDEF", -1) {}

MemoryError::MemoryError(const CStdStr<char>& methode, const CStdStr<char>& msg, const CStdStr<char>& file,
                         int line)
    : BasicError(methode, msg, file, line)
{
}

ParameterError::ParameterError(const CStdStr<char>& methode, const CStdStr<char>& msg,
                               const CStdStr<char>& parameter, const CStdStr<char>& file, int line)
    : BasicError(methode, msg, file, line), m_parameter(parameter)
{
}

MemberError::MemberError(const CStdStr<char>& methode, const CStdStr<char>& msg, const CStdStr<char>& member,
                         const CStdStr<char>& file, int line)
    : BasicError(methode, msg, file, line), m_member(member)
{
}

EStdException::EStdException(const CStdStr<char>& methode, const CStdStr<char>& msg,
                             const CStdStr<char>& file, const unsigned long& line)
    : m_methode(methode), m_msg(msg), m_file(file), m_line(line)
{
}

EConstruction::EConstruction(const CStdStr<char>& methode, const CStdStr<char>& parameters,
                             const CStdStr<char>& msg, const CStdStr<char>& file, const unsigned long& line)
    : EStdException(methode, msg, file, line), m_parameters(parameters)
{
}

EOutOfBounds::EOutOfBounds(const CStdStr<char>& methode, const CStdStr<char>& msg, const CStdStr<char>& file,
                           const unsigned long& line)
    : EStdException(methode, msg, file, line)
{
}

EFileAccess::EFileAccess(ERROR_CODE code) : m_code(code) {}

CStdStr<char> EFileAccess::getErrorText() const
{
    switch (m_code)
    {
    case PATH_NOT_FOUND:
        return "path not found";
    case FILE_NOT_FOUND:
        return "file not found";
    case FILE_EMPTY:
        return "file empty";
    case INVALID_FILE_FORMAT:
        return "invalid file format";
    case FILE_WRITE_PROTECTED:
        return "file write protected";
    }
    return "unknown error";
}
