// The export of an image to a layout: the window's command and the console program's, from the same stages.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "files/output_file.h"
#include "iml/export/local_time.h"
#include "operation/operation.h"

namespace vantrel {

/// What the user answers when asked for the layout.
struct SChosenLayout {
    std::string layoutPath;
    std::string folderText;  ///< The path field: a folder that is put before every path, or nothing.
};

/// Asks for the layout; nothing when the user cancelled, who has then been told so with the two texts below.
using ChooseImlPath = std::function<std::optional<SChosenLayout>()>;
inline constexpr const char* kExportCancelledText = "You cancelled.";
inline constexpr const char* kExportCancelledCaption = "No File Chosen";

/// The path of a layout for the folder (with its separator) and the file name that were chosen for it: always with the
/// extension ".iml".
std::string LayoutPathOf(const std::string& folder, const std::string& fileName);

/// The "iso2iml" command of the window for the image `folder` (with its separator) + `fileName`: walks the image, asks
/// for the layout's path, and writes it.
void IsoToIml(const std::string& folder, const std::string& fileName, const ChooseImlPath& chooseImlPath,
              COperation& operation, const std::function<SLocalTime()>& clock = LocalTimeNow);

/// An export without questions.
struct SExportRequest {
    std::string imagePath;
    std::string layoutPath;
    std::string folderText;
    EOutputManner manner = EOutputManner::CommitNew;
    /// Where the listed files are written as well, with its closing separator ("" is the current folder).
    std::optional<std::string> extractionFolder;
    std::function<SLocalTime()> clock = LocalTimeNow;
};

/// Exports an image so that either the layout with all that belongs to it appears or nothing does. Side files are kept
/// in a temporary folder beside the layout.
void ExportImage(const SExportRequest& request, COperation& operation);

}  // namespace vantrel
