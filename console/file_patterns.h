// Wildcard patterns like "*.iso" among the files of a command. Shells on Linux expand them; on Windows programs must.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantrel {

/// Whether a name matches a pattern, in which '*' stands for any characters and '?' for one. Ignores the case of ASCII
/// letters, like Windows.
bool MatchesPattern(std::string_view name, std::string_view pattern);

/// Replaces every pattern in a file name by the matching names, sorted. A pattern without a match stays, so that the
/// message about a missing file names it.
std::vector<std::string> ExpandPatterns(const std::vector<std::string>& files);

/// The files of a command: on Windows with patterns expanded, unchanged elsewhere.
std::vector<std::string> CommandFiles(const std::vector<std::string>& files);

}  // namespace vantrel
