// The system's console, for the console program; implemented in the native_file sources.
#pragma once

namespace vantrel {

enum class EStream { Output, Errors };

/// Makes the console interpret the program's output as UTF-8. Output to files and pipes is always UTF-8.
void UseUtf8Console();

/// Stops the translation of line ends in the program's output.
void UseBinaryOutput();

/// Whether a stream leads to a terminal.
bool IsTerminal(EStream stream);

/// Columns of the terminal on stderr at this moment; 80 if unknown.
int TerminalColumns();

}  // namespace vantrel
