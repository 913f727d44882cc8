// Breaks the lines of help texts.
#pragma once

#include <string>

namespace vantrel {

/// The text with its lines broken between words, so that they have at most 80 characters. A line that begins with a
/// blank continues at `column` if its text there begins a column of its own; every other line continues below its own
/// first character.
std::string Wrapped(const std::string& text, std::size_t column);

}  // namespace vantrel
