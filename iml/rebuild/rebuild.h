// Rebuilds an image from its layout, its leading structures and the loose files that the layout lists.
#pragma once

#include <optional>
#include <string>

#include "files/output_file.h"
#include "iso/edit/edit_report.h"
#include "operation/operation.h"

namespace vantrel {

/// The two lists that the window keeps beside the layout during a rebuild.
struct SPlacementFilePaths {
    std::string entryList;  ///< Text: first sector, last sector and path of every placed file.
    std::string bounds;     ///< 32-bit numbers, little-endian: the sectors again, and the two behind the last file.
};

/// How an image is rebuilt.
enum class ERebuildRule {
    LikeWindow,  ///< One file behind the other, as the window does; the directories are not corrected.
    Edited,      ///< The image as it was, with the changed files, and with structures that describe them. Strict only.
    Exact,       ///< The exported image; anything else is refused. Strict only.
};

struct SRebuildRequest {
    std::string layoutPath;
    std::string leadingPath;  ///< The ".ims" file with the leading structures.
    std::string outputPath;
    /// The window's lists; the console program writes none.
    std::optional<SPlacementFilePaths> sideFiles = std::nullopt;
    EOutputManner manner = EOutputManner::InPlace;
    /// Where relative paths start, with its closing separator. Empty: paths are used as written, in the current folder.
    std::string filesFolder;
    bool strict = false;  ///< A layout or a file that is shorter than it claims is a failure.
    ERebuildRule rule = ERebuildRule::LikeWindow;
    // For the rules Edited and Exact:
    std::string gapsPath;  ///< The gap file, which an edited rebuild can do without.
    SEditRules editRules;
    bool dryRun = false;  ///< Only report.
};

/// The window's names for a rebuild of `folder` (with its separator) + `fileName`: all files lie beside the layout and
/// have its base name. Only the ".ims" file may have the name that the layout gives it.
SRebuildRequest WindowRebuild(const std::string& folder, const std::string& fileName);

/// The window's "vantrel" and the console program's iml2iso: calls the rebuild for the layout's media letter. Fails
/// with code 2011 if the layout cannot be opened, and for other letters. The report is empty for the rule LikeWindow.
SEditReport RebuildImage(const SRebuildRequest& request, COperation& operation);

/// Rebuilds a CD or UMD image: every file at its first sector, then the postgap of a PlayStation 2 CD.
void RebuildCdImage(const SRebuildRequest& request, COperation& operation);

/// Rebuilds a DVD image: one file behind the other, then the trailing sector at its own sector number.
void RebuildDvdImage(const SRebuildRequest& request, COperation& operation);

}  // namespace vantrel
