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

/// The only line of the batch file, "\n" at its end. Names are not quoted in it.
std::string BatchLineOf(const SConverterCall& call);

/// The same call as the words behind the program's name.
std::vector<std::string> ArgumentsOf(const SConverterCall& call);

/// Whether the command processor, run in `folder` (with its separator), would read the line as it is meant: the names
/// and the folder hold nothing that it interprets or cannot spell, the folder can be its current one, and no
/// "tmpfile.com" there would be taken for the converter.
bool IsBatchLineSafe(const std::string& folder, const SConverterCall& call);

}  // namespace vantrel
