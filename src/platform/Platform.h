#pragma once

#include <cstdio>
#include <string>

/// What differs between systems, as plain functions over plain types: win32/ and posix/ each define them all.
namespace zel
{

/// Opens a file as std::fopen does, but not for a child process to inherit. `mode` is "rb" or "wb".
/// Null where the file cannot be opened, and for a directory.
std::FILE* OpenFile(const char* path, const char* mode);

/// The text of a string resource of the running program; empty where there is none, and off Windows.
std::string StringResource(unsigned identifier);

} // namespace zel
