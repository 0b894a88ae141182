#pragma once

#include <string>
#include <string_view>

/// Text operations on file names and on the patterns that callers search with. They do not touch the file
/// system.
namespace zel
{

/// The extension of the last part of a path, from its last "." on; empty if it has none. "\", "/" and the ":"
/// after a drive letter end the parts before it.
std::string_view Extension(std::string_view path);

/// Whether `text` matches `pattern`: "?" stands for exactly one character, "*" for one or more, any other
/// character for itself in either letter case. Takes at most time in proportion to the product of the
/// lengths.
bool MatchesExtension(std::string_view pattern, std::string_view text);

/// \name Searches for files
/// How Windows matches names with a pattern when it searches a folder, for systems that do not. As Windows
/// does, SearchExpression first turns the pattern into an expression. In it, "*" stands for any characters,
/// and there are three more wildcards:
///
///   <   any characters, but not the last "." of the name
///   >   any one character; none before a "." and at the end
///   "   a "."; nothing at the end
///
/// Dots and blanks at the end of a pattern are dropped, except that a pattern ending in "*." matches only
/// names without a ".". The pattern "*.*" matches every name, the empty one none. The letters A to Z match in
/// either case.
/// @{

std::string SearchExpression(std::string_view pattern);

bool MatchesSearch(std::string_view expression, std::string_view name);

/// @}

} // namespace zel
