#pragma once

#include "ZelUtil/StdStr.h"

/// \file
/// The error objects that the library throws, always by value, and that its callers may throw and catch too.
/// Two families stand under one empty root: BasicError, whose source line is an `int`, and EStdException,
/// whose source line is an `unsigned long`. All are plain values: they own copies of their texts, copy and
/// assign member by member, and have no virtual operations. Building or copying one fails only with the
/// standard allocation failure of its texts.
///
/// The texts, in every class:
/// - methode: the operation that failed: class name, two colons, operation name; or a short phrase
/// - msg: what happened, for a person
/// - file: the source file of the throwing statement
/// - line: its line there

/// Catches every error of both families.
class ZELUTIL_API EBaseException
{
};

/// The root of the errors whose source line is an `int`.
class ZELUTIL_API BasicError : public EBaseException
{
public:
    BasicError(const CStdStr<char>& methode, const CStdStr<char>& msg, const CStdStr<char>& file, int line);

    const CStdStr<char>& getMethode() const { return m_methode; }
    const CStdStr<char>& getMsg() const { return m_msg; }
    const CStdStr<char>& getFile() const { return m_file; }
    const int& getLine() const { return m_line; }

protected:
    /// For derived classes that have nothing to tell: three times "UNDEF", and line -1.
    BasicError();

private:
    CStdStr<char> m_methode;
    CStdStr<char> m_msg;
    CStdStr<char> m_file;
    int m_line;
};

/// Memory for an object's own data could not be obtained.
class ZELUTIL_API MemoryError : public BasicError
{
public:
    MemoryError(const CStdStr<char>& methode, const CStdStr<char>& msg, const CStdStr<char>& file, int line);
};

/// An argument does not fit. `parameter` is its name or its value.
class ZELUTIL_API ParameterError : public BasicError
{
public:
    ParameterError(const CStdStr<char>& methode, const CStdStr<char>& msg, const CStdStr<char>& parameter,
                   const CStdStr<char>& file, int line);

    const CStdStr<char>& getParameter() const { return m_parameter; }

private:
    CStdStr<char> m_parameter;
};

/// The object is in the wrong state. `member` is the name of the member that shows it.
class ZELUTIL_API MemberError : public BasicError
{
public:
    MemberError(const CStdStr<char>& methode, const CStdStr<char>& msg, const CStdStr<char>& member,
                const CStdStr<char>& file, int line);

    const CStdStr<char>& getMember() const { return m_member; }

private:
    CStdStr<char> m_member;
};

/// The root of the errors whose source line is an `unsigned long`.
class ZELUTIL_API EStdException : public EBaseException
{
public:
    EStdException(const CStdStr<char>& methode, const CStdStr<char>& msg, const CStdStr<char>& file,
                  const unsigned long& line);

    const CStdStr<char>& getMethode() const { return m_methode; }
    const CStdStr<char>& getMsg() const { return m_msg; }
    const CStdStr<char>& getFile() const { return m_file; }
    const unsigned long& getLine() const { return m_line; }

private:
    CStdStr<char> m_methode;
    CStdStr<char> m_msg;
    CStdStr<char> m_file;
    unsigned long m_line;
};

/// An object could not be constructed. `parameters` are the constructor's arguments as text; mind that they
/// come second here, before the message.
class ZELUTIL_API EConstruction : public EStdException
{
public:
    EConstruction(const CStdStr<char>& methode, const CStdStr<char>& parameters, const CStdStr<char>& msg,
                  const CStdStr<char>& file, const unsigned long& line);

    const CStdStr<char>& getParameters() const { return m_parameters; }

private:
    CStdStr<char> m_parameters;
};

/// An index or a counter left its range.
class ZELUTIL_API EOutOfBounds : public EStdException
{
public:
    EOutOfBounds(const CStdStr<char>& methode, const CStdStr<char>& msg, const CStdStr<char>& file,
                 const unsigned long& line);
};

/// Something looked for is not there.
class ZELUTIL_API ENotFound : public EBaseException
{
};

/// A file could not be used.
class ZELUTIL_API EFileAccess : public EBaseException
{
public:
    enum ERROR_CODE : int
    {
        PATH_NOT_FOUND = 0,
        FILE_NOT_FOUND = 1,
        FILE_EMPTY = 2,
        INVALID_FILE_FORMAT = 3,
        FILE_WRITE_PROTECTED = 4
    };

    EFileAccess(ERROR_CODE code);

    const ERROR_CODE& getErrorCode() const { return m_code; }

    /// "path not found", "file not found", "file empty", "invalid file format", "file write protected";
    /// "unknown error" for any other code.
    CStdStr<char> getErrorText() const;

private:
    ERROR_CODE m_code;
};
