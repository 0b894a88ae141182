#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>

/// Files read as Windows reads text: CR LF is one line end, Ctrl-Z ends the text. Elsewhere no stream does
/// that, so it is done here, for streams that are open as they are.
namespace zel
{

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// Null where the file cannot be opened; so is a folder and a name of more than 511 characters.
File OpenTextFile(const char* name);

/// The next character, or EOF. Behind a Ctrl-Z it is EOF for good.
int ReadTextCharacter(std::FILE* file);

/// The characters from here to the end of the text; nothing where there are more than `limit`.
std::optional<std::size_t> CountText(std::FILE* file, std::size_t limit);

/// Reads `count` characters from the start of the file on. False where there are fewer, and behind an error
/// that the stream met in counting them.
bool ReadText(std::FILE* file, char* text, std::size_t count);

} // namespace zel
