// A PlayStation 2 CD image into a raw image of 2352-byte Mode 2 sectors with a CUE sheet: through the converter
// program, as the window does it, and directly.
#pragma once

#include <string>

#include "files/output_file.h"
#include "operation/operation.h"
#include "app/converter/converter_runner.h"

namespace vantrel {

/// What was chosen in the window: a folder with its separator, and a file name in it.
struct SIsoToBinRequest {
    std::string folder;
    std::string fileName;
};

/// Prepares converter, batch file and sheet, runs the converter and waits for it. What it makes of the image is not
/// examined. Outputs are named after the file name without its extension.
void IsoToBin(const SIsoToBinRequest& request, CConverterRunner& runner, COperation& operation);

struct SDirectIsoToBinRequest {
    std::string imagePath;
    std::string binPath;
    std::string cuePath;
    EOutputManner manner = EOutputManner::CommitNew;
};

/// The path of the sheet that belongs to a raw image: its own with the extension ".cue".
std::string CuePathOf(const std::string& binPath);

/// Converts without a second program; raw image and sheet appear together or not at all. Refuses, beyond what the
/// window refuses, an image that is not whole sectors or longer than the addresses of a disc reach.
void IsoToBinDirectly(const SDirectIsoToBinRequest& request, COperation& operation);

}  // namespace vantrel
