// What the console program prints: results on stdout, messages on stderr.
#pragma once

#include <string>

#include "files/native_console.h"
#include "operation/operation.h"

namespace vantrel {

/// Thrown when results cannot be written: to a full disk, or to a pipe that nobody reads any more.
class CResultsLost {
public:
    CResultsLost();
    /// Prints a message, unless a closed pipe is the cause, and returns the exit status: 141 for a closed pipe, as if
    /// its signal had ended the program, else 1.
    int Report() const;

private:
    bool m_isClosedPipe;
    std::string m_cause;
};

/// Prints results on stdout at once. Throws CResultsLost.
void PrintResults(const std::string& text);

/// A text of a conversion without the blanks and line breaks at its end.
std::string OneLine(std::string text);

/// The text with control characters and invalid UTF-8 as "\x1B", so that names cannot control the terminal.
std::string Escaped(const std::string& text);
/// The text as it is printed to a stream: escaped if the stream is a terminal.
std::string Shown(const std::string& text, EStream stream);

/// The text of a failed conversion, with its cause in brackets if it has one.
std::string FailureText(const CConversionFailed& failure);

/// Prints a failure as "vantrel COMMAND: FILE: text". The file is left out if the text begins with it.
void PrintError(const std::string& command, const std::string& file, const std::string& text);

}  // namespace vantrel
