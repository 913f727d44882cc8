// What a command reads for one FILE: for a CUE sheet, also the files that the sheet names.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vantrel {

struct SCommandInput {
    std::vector<std::string> files;   ///< Existing files that no output may replace.
    std::vector<std::string> unread;  ///< Names each further data track of a sheet, whose files no command reads.
    std::string problem;              ///< Why the file cannot be opened, so that it may name more files; else empty.
    std::int64_t bytes = 0;           ///< Length of the file, of a sheet that of its data track; 0 if unknown.
};

/// Throws CRefused for a CUE sheet that cannot be used. Any other file is examined no further, even if it is missing.
SCommandInput InputOf(const std::string& path);

}  // namespace vantrel
