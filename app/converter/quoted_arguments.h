// The command line of a program that is started directly.
#pragma once

#include <string>
#include <vector>

namespace vantrel {

/// A command line from which the started program reads exactly these words, the first being its own name: each in
/// double quotes, quotes in it and backslashes before them escaped.
std::string QuotedCommandLine(const std::vector<std::string>& words);

}  // namespace vantrel
