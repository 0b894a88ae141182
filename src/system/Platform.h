#pragma once

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// What differs between systems, as plain functions over plain types. win32/ and posix/ each define all of
/// them. They throw nothing but std::bad_alloc, and that only where they return strings or arrays.
namespace zel
{

/// \name Files
/// @{

/// A stream that closes itself.
using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// Opens a file as std::fopen does; child processes do not inherit it. `mode` is "rb" or "wb". Returns null
/// if the file cannot be opened or is a directory.
std::FILE* OpenFile(const char* path, const char* mode);

/// Opens the debug log for appending text; null if that fails.
std::FILE* OpenLogFile();

/// std::fseek and std::ftell with 64-bit positions; Tell returns -1 on failure.
bool Seek(std::FILE* file, std::int64_t offset, int origin);
std::int64_t Tell(std::FILE* file);

/// The length in bytes of the file that a stream is connected to; -1 if that is no ordinary file.
std::int64_t FileLength(std::FILE* file);

bool MakeDirectory(const char* path);

/// The names of the entries of a folder, "." and ".." included, that match the last part of `searchPath` by
/// the rules of Windows. Empty if the search cannot start.
std::vector<std::string> FindFiles(const std::string& searchPath);

/// @}
/// \name Characters
/// @{

/// What std::toupper makes of each of the 256 characters in the current locale, as a table that is valid
/// until another locale is set. Null if the system does not show its table.
const std::int32_t* UpperCaseTable();

/// @}
/// \name Windows
/// `window` is the address of the variable that holds the handle, and not null.
/// @{

struct Extent
{
    unsigned long width;
    unsigned long height;
};

bool WindowExists(const unsigned char* window);
std::optional<Extent> WindowExtent(const unsigned char* window);
std::optional<Extent> ClientExtent(const unsigned char* window);

/// @}
/// \name Modules
/// @{

char* OpenLibrary(const char* name);
bool CloseLibrary(char* library);
void* FindFunction(char* library, const char* name);

/// The full path of a loaded module, which is named by its file name or full path; nothing if there is none.
std::optional<std::string> ModulePath(const char* name);

/// The text of a string resource of the running program; empty if there is none, and off Windows.
std::string StringResource(unsigned identifier);

/// @}
/// \name Threads and time
/// @{

using ThreadRoutine = unsigned long (*)(void* argument);

/// Returns the thread's identifier, or 0 if none was started.
unsigned long StartThread(ThreadRoutine routine, void* argument);

void SleepFor(unsigned long milliseconds);

std::tm LocalTime();

/// @}

} // namespace zel
