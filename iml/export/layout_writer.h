// Writes the layout of an image: the ".iml" text that names the sectors of every file, and the ".ims" file with the
// leading structures. docs/formats/iml.md describes both.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>

#include "files/checksum.h"
#include "files/commit_together.h"
#include "files/output_file.h"
#include "iml/export/local_time.h"
#include "iml/export/walker.h"
#include "operation/operation.h"

namespace vantrel {

using CommitOutputs = std::function<bool(std::span<COutputFile* const> outputs, std::string& problem)>;

struct SLayoutRequest {
    std::string layoutPath;  ///< The ".iml" file.
    /// Text of the path field: a folder with its closing separator, put before every path; empty for relative paths.
    std::string folderText;
    /// The file that begins with the leading structures: the window's copy of them, or the image.
    std::string leadingSource;
    CByteSource* leadingImage = nullptr;  ///< The image in that file if the file is a container.
    /// The side files of the window, of which the copies of header and path table are deleted at the end.
    std::optional<SWalkFilePaths> sideFiles = std::nullopt;
    EOutputManner manner = EOutputManner::InPlace;
    std::function<SLayoutTime()> clock = LayoutTimeNow;
    /// Called with the checksums of the finished layout and its leading structures, before they get their names.
    std::function<void(const SChecksum& layout, const SChecksum& leading)> beforeCommit = [](const SChecksum&,
                                                                                             const SChecksum&) {};
    /// Gives both files their names.
    CommitOutputs commit = CommitTogether;
};

/// The folder that the path field puts before every path: its text without drive, and without the part behind the last
/// separator, like _splitpath. Both '\' and '/' separate.
std::string LayoutFolderOf(const std::string& folderText);

/// Writes the layout of a walked image and completes. Fails with the codes 4100 (file list), 4101 (".ims" created),
/// 4103 (offset list), 4101a (source of the leading structures), 4102 (".ims" reopened) and 4104 (".iml").
void WriteImlLayout(const SLayoutRequest& request, const SWalkedImage& image, COperation& operation);

}  // namespace vantrel
