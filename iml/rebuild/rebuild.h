// Rebuilding of an image from its layout, its leading structures and the loose files that the layout lists.
#pragma once

#include <string>

#include "files/output_file.h"
#include "operation/operation.h"

namespace vantrel {

/// What a rebuild is asked to do. In place it keeps its two lists as files beside the layout and reads the listed files
/// under the paths as written, in the process's current folder. In the other manners the lists stay in memory, and what
/// the window lets pass (a layout or a file that is shorter than it claims) is refused.
struct SRebuildRequest {
    std::string layoutPath;
    std::string entryListPath;  ///< The list of placed files; used in place only.
    std::string boundsPath;     ///< The table of their first and last sectors; used in place only.
    std::string leadingPath;    ///< The ".ims" file with the image's leading structures.
    std::string outputPath;
    EOutputManner manner = EOutputManner::InPlace;
    std::string filesFolder;  ///< Where relative paths begin, with its closing separator; empty: as written.
    bool exact = false;       ///< Give back the image that was exported; never in place.
    std::string gapsPath;     ///< The stored areas that no file covers; may be missing. Used by an exact rebuild only.
};

/// The names that the window gives to a rebuild of `folder` (with its separator) + `fileName`: everything lies beside
/// the layout and is named after its base name.
SRebuildRequest WindowRebuild(const std::string& folder, const std::string& fileName);

/// The "vantrel" command: looks at the layout's media letter and calls the rebuild that fits.
void Vantrel(const SRebuildRequest& request, COperation& operation);

/// Rebuilds a CD or UMD image: every file at its first sector, then the postgap where the image is a PlayStation 2 CD.
void RebuildCdImage(const SRebuildRequest& request, COperation& operation);

/// Rebuilds a DVD image: one file after the other, and the trailing sector at the place that it names.
void RebuildDvdImage(const SRebuildRequest& request, COperation& operation);

}  // namespace vantrel
