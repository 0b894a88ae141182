#pragma once

#include "ZelUtil/StdStr.h"

#include <cstdio>

/// Thin services of the operating system, the same on every platform. Apart from ActivateDebugLog, which
/// belongs to the log, nothing here throws, keeps state or writes to a log. A call that fails, also for lack
/// of memory, returns `false`, null or 0, and leaves its output arguments as they were unless its comment
/// says otherwise.
///
/// Handles are passed as plain pointers, so that callers need no platform types:
/// - window: the address of the variable that holds the window's handle: an HWND on Windows, the 4-byte
///   identifier of an X11 window elsewhere. Null means no window. X11 windows require a library that was
///   built with libxcb and the display that the environment variable DISPLAY names; without them, no window
///   exists.
/// - library: the handle itself, cast to `char*`
/// - function: the function's address, which the caller casts to the function's type
namespace OSDependant
{

ZELUTIL_CONST_RESULTS_BEGIN

/// A sequential reader of a binary file, value by value in either byte order.
class ZELUTIL_API IFileAccess
{
public:
    /// The byte order of the 2- and 4-byte values in the file. Values of 1 and 8 bytes, and blocks, are
    /// delivered as stored in either mode. Every value other than 0 acts as LittleEndian.
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

    /// Moves the position by `offset` bytes, backwards if negative. May move past the end. Returns false and
    /// stays in place if it would move before the start.
    virtual bool skip(long offset) = 0;

    /// The position in bytes from the start of the file; 0 if it is unknown or does not fit the type.
    virtual unsigned long getPosition() = 0;

    /// The file's length in bytes; 0 in the same cases. Does not move the position.
    virtual unsigned long getLength() = 0;

    /// Each call reads one value, or `count` bytes, and moves past it. Returns false unless all of its bytes
    /// can be read. If the file ends before that, the destination holds the bytes that were left, in the
    /// file's order, and the position is at the end.
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

/// Creates a reader of `fileName`. The caller deletes it; until then it keeps the file open. A file that
/// cannot be opened, or a folder, gets a reader too, whose reads and `skip` fail and whose length and
/// position are 0. Returns null only if memory runs out.
ZELUTIL_API IFileAccess* openFile(const CStdStr<char>& fileName, IFileAccess::FileInterpretationModes mode);

/// The length in bytes of the file that a stream is connected to, not counting what the stream has yet to
/// write. The stream's position does not matter and does not change. Returns false, with a `length` of -1, if
/// `stream` is null or connected to something other than an ordinary file, or if the length does not fit.
ZELUTIL_API const bool GetFileLength(std::FILE* stream, long& length);

/// Creates one folder, with the system's default rights. Returns false if it already exists or its parent
/// does not. `extra` is ignored.
ZELUTIL_API const bool CreateDir(const CStdStr<char>& dirName, const void* const extra);

/// Lists the files and folders in a folder, except "." and "..", whose names match a pattern.
///
/// - directory: the folder; empty for the current one. A backslash is put between it and the pattern unless
///   it ends in one.
/// - pattern: a name with the wildcards of Windows: "*" stands for any characters, "?" for any one character
///   (or none, before a "." and at the end), "*.*" for every name. Letter case does not matter. If the
///   pattern has an extension (the part from its last "." on), the name's extension must match it too, by
///   stricter rules: "?" stands for exactly one character and "*" for at least one. So "*.*" does not find
///   names without a ".", and "*.htm" does not find "a.html".
///
/// Returns the number of names, and in `*list` a new array of them, which the caller releases with delete[].
/// The names are in the system's order, off Windows in the order of their bytes. If nothing matches, returns
/// 0 and leaves `*list` as it was.
///
/// Off Windows, this call alone accepts a backslash as well as "/" between folders, and the letters A to Z
/// are the only ones whose case does not matter.
ZELUTIL_API const unsigned long GetFileListInDirectory(const CStdStr<char>& directory,
                                                       const CStdStr<char>& pattern,
                                                       CStdStr<char>** const list);

/// Whether the window exists.
ZELUTIL_API const bool IsWindowExisting(const unsigned char* const window);

/// Width and height of a window in pixels, frame included. Returns false if the window does not exist.
ZELUTIL_API const bool GetWindowRect(const unsigned char* const window, unsigned long& width,
                                     unsigned long& height);

/// The same for the area inside the frame.
ZELUTIL_API const bool GetClientRect(const unsigned char* const window, unsigned long& width,
                                     unsigned long& height);

/// Loads a dynamic library, found by the system's own search rules. Returns null if it cannot be loaded or
/// the construction of one of its global objects fails. Loads are counted: the library stays until FreeLib
/// has been called as often.
ZELUTIL_API char* const LoadLib(const CStdStr<char>& libraryName);

/// Undoes one LoadLib. Returns false if `library` is not a loaded library.
ZELUTIL_API const bool FreeLib(char* const library);

/// The address of a function that the library itself exports; functions of other libraries that it uses do
/// not count. Returns null if there is no such function or `library` is not a loaded library. Off Windows, a
/// few functions of the C library that the system itself provides, such as `time`, are not found in it.
ZELUTIL_API void* GetFunctionReference(char* const library, const CStdStr<char>& functionName);

/// Starts a thread that runs `routine(argument)` and exits with its result. Returns the thread's identifier,
/// or 0 if no thread was started or `routine` is null. The thread is detached: it cannot be waited for, and
/// the system reclaims its resources when it ends. What `argument` points to must live as long as the thread
/// uses it.
ZELUTIL_API unsigned long beginThread(unsigned long (*routine)(void*), void* argument);

/// Suspends the calling thread for that long.
ZELUTIL_API void threadSleep(unsigned long milliseconds);

/// The local time of day: seconds and minutes from 0 to 59, hours from 0 to 23. Mind the order of the
/// arguments.
ZELUTIL_API void getTime(unsigned short* const seconds, unsigned short* const minutes,
                         unsigned short* const hours);

/// The full path of the file of a module, which is the program or a library that the process has loaded;
/// loads nothing. `moduleName` is the module's file name or full path. The path is cut to `size` - 1
/// characters; if none are left, `path` becomes empty and the result is false. If no such module is loaded,
/// returns false and leaves `path` as it was.
ZELUTIL_API const bool GetModulePath(const CStdStr<char>& moduleName, CStdStr<char>& path, unsigned int size);

ZELUTIL_CONST_RESULTS_END

} // namespace OSDependant
