// The batch file through which the window runs the raw-sector converter, and when it is safe to run it.
#pragma once

#include <string>
#include <vector>

namespace vantrel {

inline constexpr const char* kBatchFileName = "ISO2BIN.BAT";
inline constexpr const char* kConverterFileName = "tmpfile.exe";

/// One call of the converter. Both names are relative to the folder in which it runs.
struct SConverterCall {
    std::string inputName;
    std::string outputName;
    bool postgap = false;
};

/// The only line of the batch file, with "\n" at its end. The names are not quoted.
std::string BatchLineOf(const SConverterCall& call);

/// The arguments of the same call, without the program's name.
std::vector<std::string> ArgumentsOf(const SConverterCall& call);

/// Whether the command processor, run in `folder` (with its separator), executes the line as intended: names and folder
/// contain only characters that it takes literally, the folder can be its current one and is searched for programs, and
/// there is no "tmpfile.com", which it would run instead of the converter.
bool IsBatchLineSafe(const std::string& folder, const SConverterCall& call);

}  // namespace vantrel
