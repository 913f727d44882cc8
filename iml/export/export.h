// The export of an image to a layout, for the window and for the console program.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "files/byte_source.h"
#include "files/output_file.h"
#include "iml/export/local_time.h"
#include "operation/operation.h"

namespace vantrel {

/// The user's choice of a layout.
struct SChosenLayout {
    std::string layoutPath;
    std::string folderText;  ///< Text of the path field.
};

/// Asks for the layout. Nothing if the user cancelled, after the window has shown the two texts below.
using ChooseImlPath = std::function<std::optional<SChosenLayout>()>;
inline constexpr const char* kExportCancelledText = "You cancelled.";
inline constexpr const char* kExportCancelledCaption = "No File Chosen";

/// The path of a layout for the chosen folder (with its separator) and file name: always with the extension ".iml".
std::string LayoutPathOf(const std::string& folder, const std::string& fileName);

/// The window's "iso2iml" for the image `folder` (with its separator) + `fileName`: walks the image, asks for the
/// layout, and writes it. False if the user cancelled.
bool IsoToIml(const std::string& folder, const std::string& fileName, const ChooseImlPath& chooseImlPath,
              COperation& operation, const std::function<SLayoutTime()>& clock = LayoutTimeNow);

/// The console program's export.
struct SExportRequest {
    std::string imagePath;
    CByteSource* image = nullptr;  ///< The image in that file if the file is a container; null: the file is the image.
    std::string layoutPath;
    std::string folderText;
    EOutputManner manner = EOutputManner::CommitNew;
    /// Folder for the listed files, with its closing separator ("" is the current folder); nothing to extract none.
    std::optional<std::string> extractionFolder;
    bool keepDates = true;   ///< Give the files the recorded dates.
    std::string existsHint;  ///< See SExtractionRequest.
    std::function<SLayoutTime()> clock = LayoutTimeNow;
};

/// Exports an image. Either the layout appears with all its files, or nothing does.
void ExportImage(const SExportRequest& request, COperation& operation);

}  // namespace vantrel
