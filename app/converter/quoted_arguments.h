// The command line of a program that is started without a command processor.
#pragma once

#include <string>
#include <vector>

namespace vantrel {

/// A command line that the started program splits into exactly these words, of which the first is its own name. Each
/// word is put in double quotes; quotes in it, and backslashes before quotes, are escaped.
std::string QuotedCommandLine(const std::vector<std::string>& words);

}  // namespace vantrel
