// A PlayStation 2 CD image into a raw image of 2352-byte Mode 2 sectors with a CUE sheet.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "files/byte_source.h"
#include "files/output_file.h"
#include "operation/operation.h"

namespace vantrel {

struct SIsoToBinRequest {
    std::string imagePath;
    std::string binPath;
    std::string cuePath;
    EOutputManner manner = EOutputManner::CommitNew;
    CByteSource* image = nullptr;  ///< The image in that file if the file is a container; null: the file is the image.
    std::uint32_t workers = 1;     ///< Threads that expand the container and encode sectors.
    /// Called with the complete raw image before it gets its name; ends the conversion if the output is wrong.
    std::function<void(COutputFile& output)> checkOutput = {};
    const char* doneText = "Conversion iso2bin Done !";
};

/// The path of the sheet that belongs to a raw image: the same path with the extension ".cue".
std::string CuePathOf(const std::string& binPath);

/// Converts an image without the converter program; raw image and sheet appear together or not at all. Appends the
/// postgap to an image that lacks exactly that, and gives a notice if the image is shorter for another reason. Fails,
/// beyond what ExamineCdImage and PlanExpansion refuse, for a partial last sector, and if a sheet cannot name the raw
/// image.
void IsoToBin(const SIsoToBinRequest& request, COperation& operation);

/// Converts any image that is a whole number of sectors, without a postgap.
void ImageToBin(const SIsoToBinRequest& request, COperation& operation);

}  // namespace vantrel
