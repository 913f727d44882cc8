// The layout of an image: the ".iml" text that names the sectors of every file, and the ".ims" file with the image's
// leading structures. docs/formats/iml.md describes both.
#pragma once

#include <functional>
#include <string>

#include "files/output_file.h"
#include "iml/export/local_time.h"
#include "iml/export/walker.h"
#include "operation/operation.h"

namespace vantrel {

struct SLayoutRequest {
    std::string layoutPath;  ///< The ".iml" file.
    /// Text of the path field: a folder with its closing separator, put before every path; empty for relative paths.
    std::string folderText;
    EOutputManner manner = EOutputManner::InPlace;
    std::function<SLocalTime()> clock = LocalTimeNow;
};

/// The ".ims" file of a layout: beside it, named like it.
std::string LeadingPathOf(const std::string& layoutPath);

/// The folder that the path field puts before every path of a layout: its text without drive, and without what follows
/// the last separator, in the manner of _splitpath. Both '\' and '/' separate.
std::string LayoutFolderOf(const std::string& folderText);

/// Writes the layout of an image that was walked, deletes the copies of its header and its path table, and completes.
/// Fails with the codes 4100 (file list), 4101 (".ims" created), 4103 (offset list), 4101a (header copy), 4102 (".ims"
/// reopened) and 4104 (".iml").
void WriteImlLayout(const SLayoutRequest& request, const SWalkRequest& sideFiles, const SWalkedImage& image,
                    COperation& operation);

}  // namespace vantrel
