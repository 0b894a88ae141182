#pragma once

#include <string>
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

/// \name Searches for files
/// What a pattern means to the search of Windows, for systems that have none. SearchExpression makes of it an
/// expression for MatchesSearch, in which "*" stands for any characters and, as only Windows has them:
///
///   <   any characters, but not the last "." of the name
///   >   any one character, or none before a "." and at the end
///   "   a "."; nothing at the end
///
/// Dots and blanks at the end of the pattern do not count, but behind "*." no name has a ".". "*.*" is every
/// name, and nothing is none. Letters A to Z match in either case.
/// @{

std::string SearchExpression(std::string_view pattern);

bool MatchesSearch(std::string_view expression, std::string_view name);

/// @}

} // namespace zel
