// Facts about a layout, for reports: what it lists, and which of the listed files exist.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vantrel {

struct SLayoutFile {
    std::string path;        ///< as in the layout
    std::int32_t first = 0;  ///< its sectors, both inclusive: by the directory records, or else by the layout
    std::int32_t last = 0;
    bool found = false;     ///< whether the file exists
    std::int64_t size = 0;  ///< its length in bytes, if it exists

    /// Whether the file is no longer than its range.
    bool Fits() const;
};

struct SLayoutSummary {
    std::string media;         ///< "CD", "DVD" or "UMD"
    std::int32_t entries = 0;  ///< as counted in the layout, with the leading structures and a DVD's trailing sector
    std::vector<SLayoutFile> files;
    std::string problem;  ///< see LayoutProblem
    std::string leadingPath;
    bool leadingFound = false;
};

/// The ".ims" file of a layout: the one beside it that its leading entry names, else the one with its base name, else
/// the one with its whole name. Throws CRefused if the layout exists but cannot be read.
std::string FindLeadingStructures(const std::string& layoutPath);

/// Reads a layout and looks for its files; relative paths start at `filesFolder` (with its separator). Throws CRefused
/// if the layout is unreadable, names no known medium or has no number of entries.
SLayoutSummary SummarizeLayout(const std::string& layoutPath, const std::string& filesFolder);

}  // namespace vantrel
