#pragma once

#include <string_view>

/// Names of files, and the patterns that callers look for them with.
namespace zel
{

/// The extension of a path's last part, from its last "." on; empty where it has none. "\", "/" and the ":"
/// of a drive end the parts before.
std::string_view Extension(std::string_view path);

/// Whether `text` is what `pattern` describes: "?" stands for one character, "*" for one or more, any other
/// for itself in either letter case. Takes steps in proportion to the product of the lengths at most.
bool MatchesExtension(std::string_view pattern, std::string_view text);

} // namespace zel
