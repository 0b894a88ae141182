#pragma once

#include "system/Platform.h"

#include <cstdio>

#include <memory>

/// Files read in the text mode of Windows, on every system: CR LF is one line feed, and Ctrl-Z (0x1A) ends
/// the text.
namespace zel
{

/// Null if the file cannot be opened, for a directory and for a name of more than 511 characters.
File OpenTextFile(const char* name);

/// The next character of a text, or EOF at its end; a Ctrl-Z stays in the stream, so that every further call
/// returns EOF.
int ReadTextCharacter(std::FILE* file);

/// Replaces `text` by the characters of a file and a terminating zero. Returns false, with `text` as it was,
/// if the file cannot be opened or has more than 4,194,304 characters; returns false, with `text` null, if
/// memory runs out or reading fails.
bool ReadTextFile(const char* name, std::unique_ptr<char[]>& text);

} // namespace zel
