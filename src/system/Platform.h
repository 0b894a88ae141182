#pragma once

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// What differs between systems, as plain functions over plain types: win32/ and posix/ each define them all.
/// Except for the allocation failures of the strings and arrays that they give, they throw nothing.
namespace zel
{

/// \name Files
/// @{

/// A stream that closes itself.
using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// Opens a file as std::fopen does, but not for a child process to inherit. `mode` is "rb" or "wb".
/// Null where the file cannot be opened, and for a directory.
std::FILE* OpenFile(const char* path, const char* mode);

/// Opens the debug log for appending text, or gives null.
std::FILE* OpenLogFile();

/// std::fseek and std::ftell with 64 bits; the latter gives -1 on failure.
bool Seek(std::FILE* file, std::int64_t offset, int origin);
std::int64_t Tell(std::FILE* file);

/// Bytes of the file behind the stream's descriptor; -1 where that is no ordinary file.
std::int64_t FileLength(std::FILE* file);

bool MakeDirectory(const char* path);

/// The names of a folder's entries, "." and ".." included, that match the last part of `searchPath` by the
/// rules of Windows. Empty where the search cannot start.
std::vector<std::string> FindFiles(const std::string& searchPath);

/// @}
/// \name Characters
/// @{

/// What std::toupper makes of each of the 256 characters, in the locale that is set now; valid until another
/// is set. Null where the system shows no such table.
const std::int32_t* UpperCaseTable();

/// @}
/// \name Windows
/// `window` is the address of the variable that holds the handle.
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

/// The path of a loaded module; nothing where there is no such module.
std::optional<std::string> ModulePath(const char* name);

/// The text of a string resource of the running program; empty where there is none, and off Windows.
std::string StringResource(unsigned identifier);

/// @}
/// \name Threads and time
/// @{

using ThreadRoutine = unsigned long (*)(void* argument);

/// Gives the thread's identifier, or 0.
unsigned long StartThread(ThreadRoutine routine, void* argument);

void SleepFor(unsigned long milliseconds);

std::tm LocalTime();

/// @}

} // namespace zel
