#pragma once

#include "ZelUtil/StdStr.h"

#include <cstdio>

/// Thin services of the operating system, the same on every platform. But for ActivateDebugLog, which belongs
/// to the log, nothing here throws, keeps state or writes a log: a failure is `false`, null or 0, and then
/// what was to be filled is as before unless said otherwise. Where memory runs out, the call fails.
///
/// Handles cross as plain pointers, so that callers need no platform types:
/// - window: the address of the variable that holds the window's handle: an HWND on Windows; elsewhere an X11
///   window, whose identifier is the 4 bytes there. Null is no window. X11 windows need a library that was
///   built with libxcb, and the display that DISPLAY names; without one, none exists.
/// - library: the handle itself, in the shape of a `char*`
/// - function: an address that the caller casts to the function's type
namespace OSDependant
{

ZELUTIL_CONST_RESULTS_BEGIN

/// Reads a binary file from start to end, in steps of the caller's.
class ZELUTIL_API IFileAccess
{
public:
    /// The order in which 2- and 4-byte values are stored. Values of 1 and 8 bytes and blocks are delivered
    /// as stored, whatever the order. Any value but 0 is taken for LittleEndian.
    enum FileInterpretationModes : int
    {
        BigEndian = 0,
        LittleEndian = 1
    };

    IFileAccess() = default;
    IFileAccess(const IFileAccess&) {}
    IFileAccess& operator=(const IFileAccess&) { return *this; }
    virtual ~IFileAccess() = default;

    virtual FileInterpretationModes getInterpretationMode() = 0;
    virtual void setInterpretationMode(FileInterpretationModes mode) = 0;

    /// Moves the position by `offset` bytes, backwards when negative. Behind the end is a position too, one
    /// before the start is not: false, and nothing moved.
    virtual bool skip(long offset) = 0;

    /// Bytes from the start of the file; 0 when that cannot be told or does not fit the type.
    virtual unsigned long getPosition() = 0;

    /// The file's length in bytes, under the same conditions. The position stays.
    virtual unsigned long getLength() = 0;

    /// Each reads one value, or `count` bytes, and moves on behind it. False unless every byte was there:
    /// those that were stand in the destination in the file's order, and the position is at the end.
    virtual bool read(double* value) = 0;
    virtual bool read(int* value) = 0;
    virtual bool read(unsigned int* value) = 0;
    virtual bool read(float* value) = 0;
    virtual bool read(short* value) = 0;
    virtual bool read(unsigned short* value) = 0;
    virtual bool read(char* value) = 0;
    virtual bool read(unsigned char* value) = 0;
    virtual bool read(void* buffer, unsigned long count) = 0;
};

/// A reader of `fileName`, which the caller deletes; it holds the file open until then. For a file that
/// cannot be opened, or a folder, there is a reader too: its reads and `skip` fail, its length and position
/// are 0. Null only when memory runs out.
ZELUTIL_API IFileAccess* openFile(const CStdStr<char>& fileName, IFileAccess::FileInterpretationModes mode);

/// The length in bytes of the file behind an open stream, without what the stream has yet to write; its
/// position plays no part. False with -1 where there is no ordinary file behind it, where the length does
/// not fit, and for null.
ZELUTIL_API const bool GetFileLength(std::FILE* stream, long& length);

/// Creates one folder, with the system's default rights. False when it exists or its parent does not.
/// `extra` is not used.
ZELUTIL_API const bool CreateDir(const CStdStr<char>& dirName, const void* const extra);

/// Lists the entries of a folder, files and folders alike, "." and ".." left out, whose names match.
///
/// - directory: the folder; empty for the current one. Where it does not end in a backslash, one joins it
///   to the pattern.
/// - pattern: a name with the wildcards of Windows: "*" any characters, "?" any one (or none, before a "."
///   and at the end), "*.*" everything; letter case plays no part. Where it has an extension (from its last
///   "." on), an entry's own extension has to match that once more, and more strictly: "?" is one character
///   and "*" one or more. So "*.*" finds no name without a "." and "*.htm" no "a.html".
///
/// Gives the number of names, and in `*list` a new array of them, which the caller releases by delete[].
/// Their order is the system's; off Windows that is by bytes. With nothing to list: 0, `*list` unchanged.
///
/// Off Windows this call, and no other, takes a backslash for a separator of folders as well as "/"; letter
/// case plays no part for A to Z only.
ZELUTIL_API const unsigned long GetFileListInDirectory(const CStdStr<char>& directory,
                                                       const CStdStr<char>& pattern,
                                                       CStdStr<char>** const list);

/// Whether there is such a window.
ZELUTIL_API const bool IsWindowExisting(const unsigned char* const window);

/// Width and height in pixels of a window with its frame. False when there is no such window.
ZELUTIL_API const bool GetWindowRect(const unsigned char* const window, unsigned long& width,
                                     unsigned long& height);

/// The same of its inner area.
ZELUTIL_API const bool GetClientRect(const unsigned char* const window, unsigned long& width,
                                     unsigned long& height);

/// Loads a dynamic library, which the system looks for in its way. Null when it cannot be loaded, or an
/// object of its own cannot be constructed. Each success counts: the library stays until FreeLib was called
/// as often.
ZELUTIL_API char* const LoadLib(const CStdStr<char>& libraryName);

/// Takes back one LoadLib. False for what is no loaded library.
ZELUTIL_API const bool FreeLib(char* const library);

/// The address of a function that the library itself exports, not one of those that it uses. Null when
/// there is none, and for what is no loaded library. Off Windows the C library's few functions that the
/// system itself provides, such as `time`, count as the system's.
ZELUTIL_API void* GetFunctionReference(char* const library, const CStdStr<char>& functionName);

/// Starts a thread that runs `routine(argument)` and ends with its result. Gives the thread's identifier;
/// 0 when none was started, or for a null routine. The thread is its own: it cannot be waited for, and the
/// system takes back what it held when it ends. What `argument` points to has to live that long.
ZELUTIL_API unsigned long beginThread(unsigned long (*routine)(void*), void* argument);

/// Suspends the calling thread.
ZELUTIL_API void threadSleep(unsigned long milliseconds);

/// The local time of day: 0 to 59, 0 to 59, 0 to 23. Mind the order.
ZELUTIL_API void getTime(unsigned short* const seconds, unsigned short* const minutes,
                         unsigned short* const hours);

/// The full path of the file that a module of this process was loaded from; loads nothing. A module is a
/// loaded library, or the program, named by its file name or its full path. What is delivered is cut to
/// `size` - 1 characters; true when something is left of it, else `path` becomes empty. False with `path`
/// unchanged when no such module is loaded.
ZELUTIL_API const bool GetModulePath(const CStdStr<char>& moduleName, CStdStr<char>& path, unsigned int size);

ZELUTIL_CONST_RESULTS_END

} // namespace OSDependant
