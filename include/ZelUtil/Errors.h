#pragma once

#include "ZelUtil/StdStr.h"

/// \file
/// The errors that the library throws by value. Callers may throw and catch the same classes. There are two
/// families under one empty root: BasicError, whose source line is an `int`, and EStdException, whose source
/// line is an `unsigned long`. All are plain values without virtual operations: each owns copies of its
/// texts, and is copied and assigned member by member. Constructing or copying one throws std::bad_alloc if
/// there is no memory for a text.
///
/// Every class of the two families has these members:
/// - methode: the operation that failed, as class name, two colons and operation name, or as a short phrase
/// - msg: a message for people
/// - file, line: where the error was thrown

/// The root of all errors: a handler for it catches every class of this file.
class ZELUTIL_API EBaseException
{
};

/// The base of the errors whose source line is an `int`.
class ZELUTIL_API BasicError : public EBaseException
{
public:
    BasicError(const CStdStr<char>& methode, const CStdStr<char>& msg, const CStdStr<char>& file, int line);

    const CStdStr<char>& getMethode() const { return m_methode; }
    const CStdStr<char>& getMsg() const { return m_msg; }
    const CStdStr<char>& getFile() const { return m_file; }
    const int& getLine() const { return m_line; }

protected:
    /// For derived classes without details: all three texts are "UNDEF", and the line is -1.
    BasicError();

private:
    CStdStr<char> m_methode;
    CStdStr<char> m_msg;
    CStdStr<char> m_file;
    int m_line;
};

/// There is no memory for an object's data.
class ZELUTIL_API MemoryError : public BasicError
{
public:
    MemoryError(const CStdStr<char>& methode, const CStdStr<char>& msg, const CStdStr<char>& file, int line);
};

/// An argument is invalid. `parameter` is its name or value.
class ZELUTIL_API ParameterError : public BasicError
{
public:
    ParameterError(const CStdStr<char>& methode, const CStdStr<char>& msg, const CStdStr<char>& parameter,
                   const CStdStr<char>& file, int line);

    const CStdStr<char>& getParameter() const { return m_parameter; }

private:
    CStdStr<char> m_parameter;
};

/// An object is in the wrong state. `member` names the data member concerned.
class ZELUTIL_API MemberError : public BasicError
{
public:
    MemberError(const CStdStr<char>& methode, const CStdStr<char>& msg, const CStdStr<char>& member,
                const CStdStr<char>& file, int line);

    const CStdStr<char>& getMember() const { return m_member; }

private:
    CStdStr<char> m_member;
};

/// The base of the errors whose source line is an `unsigned long`.
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

/// An object could not be constructed. `parameters` holds the constructor's arguments as text. Note that it
/// is the second argument here, before the message.
class ZELUTIL_API EConstruction : public EStdException
{
public:
    EConstruction(const CStdStr<char>& methode, const CStdStr<char>& parameters, const CStdStr<char>& msg,
                  const CStdStr<char>& file, const unsigned long& line);

    const CStdStr<char>& getParameters() const { return m_parameters; }

private:
    CStdStr<char> m_parameters;
};

/// An index or a counter is out of range.
class ZELUTIL_API EOutOfBounds : public EStdException
{
public:
    EOutOfBounds(const CStdStr<char>& methode, const CStdStr<char>& msg, const CStdStr<char>& file,
                 const unsigned long& line);
};

/// Something was not found. The library itself does not throw it.
class ZELUTIL_API ENotFound : public EBaseException
{
};

/// A file could not be used. The library itself does not throw it.
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
