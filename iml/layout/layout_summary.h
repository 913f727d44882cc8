// A layout as a whole, for those who want to know about it without rebuilding: what it lists, and what of that is
// there.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vantrel {

struct SLayoutFile {
    std::string path;        ///< as the layout has it
    std::int32_t first = 0;  ///< sectors of its range, both inclusive
    std::int32_t last = 0;
    bool found = false;     ///< whether the file is there
    std::int64_t size = 0;  ///< its length in bytes, when it is

    /// Whether the file is no longer than its range.
    bool Fits() const;
};

struct SLayoutSummary {
    std::string media;         ///< "CD", "DVD" or "UMD"
    std::int32_t entries = 0;  ///< as counted in the layout, with the leading structures (and a DVD's trailing sector)
    std::vector<SLayoutFile> files;
    bool complete = true;  ///< whether every counted entry line is there and can be read
    std::string leadingPath;
    bool leadingFound = false;
};

/// The ".ims" file of a layout: named after the layout's base name, or after its whole name, which an export gives it.
std::string FindLeadingStructures(const std::string& layoutPath);

/// Reads a layout and looks for its files, relative paths below `filesFolder` (with its separator). Nothing, and what
/// is wrong in words, when the file cannot be read, names no known medium or has no number of entries.
std::optional<SLayoutSummary> SummarizeLayout(const std::string& layoutPath, const std::string& filesFolder,
                                              std::string& problem);

}  // namespace vantrel
