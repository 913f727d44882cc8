// The raw-sector converter: a console program of its own, which the window carries and runs beside the image.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace vantrel {

/// Exit statuses of the converter.
enum class EConverterExit { Done = 0, Failed = 1, Usage = 2 };

/// Does what the words behind the program's name ask for: INPUT OUTPUT [/MODE2] [/POSTGAP], switches in any case.
/// Progress goes to `progress`, everything that went wrong to `errors`.
EConverterExit RunConverter(const std::vector<std::string>& words, std::ostream& progress, std::ostream& errors);

}  // namespace vantrel
