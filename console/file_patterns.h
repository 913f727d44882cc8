// Patterns like "*.iso" among the files of a command. Shells of Linux expand them; on Windows that is left to programs.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantrel {

/// Whether a name matches a pattern in which '*' stands for any characters and '?' for one. Cases of ASCII letters do
/// not count, as in the names of Windows.
bool MatchesPattern(std::string_view name, std::string_view pattern);

/// The files with every pattern in a file name replaced by the names that match it, sorted. A pattern that matches
/// nothing stays as it is, so that the message about a missing file names it.
std::vector<std::string> ExpandPatterns(const std::vector<std::string>& files);

/// The files that a command was given: with patterns expanded on Windows, and as they are elsewhere.
std::vector<std::string> CommandFiles(const std::vector<std::string>& files);

}  // namespace vantrel
