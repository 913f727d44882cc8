// The messages of the console program on stderr: "vantrel COMMAND: FILE: text".
#pragma once

#include <string>

#include "operation/operation.h"

namespace vantrel {

/// A text of a conversion without the blanks and line breaks at its end.
std::string OneLine(std::string text);

/// The text of a failed conversion, with its cause in brackets if it has one.
std::string FailureText(const CConversionFailed& failure);

/// Prints a failure. The file is put in front unless the text begins with it.
void PrintError(const std::string& command, const std::string& file, const std::string& text);

}  // namespace vantrel
