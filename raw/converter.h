// The raw-sector converter: a console program that the window carries and runs beside the image.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace vantrel {

/// Exit statuses of the converter.
enum class EConverterExit { Done = 0, Failed = 1, Usage = 2 };

/// Runs the converter with the arguments INPUT OUTPUT [/MODE2] [/POSTGAP], switches in any letter case. Progress goes
/// to `progress`, usage and failures go to `errors`.
EConverterExit RunConverter(const std::vector<std::string>& arguments, std::ostream& progress, std::ostream& errors);

}  // namespace vantrel
