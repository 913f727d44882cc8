// The window's conversion of an image into a raw image: the converter program does it, started through a batch file.
#pragma once

#include <string>

#include "app/converter/converter_runner.h"
#include "operation/operation.h"

namespace vantrel {

/// Converts the image `folder` (with its separator) + `fileName`. Checks the image, writes the batch file and the CUE
/// sheet, runs the converter and waits for it. Neither the converter's exit status nor the raw image is checked.
/// Outputs are named after the file name without its extension. Fails with the codes 101 and 102 if the batch file and
/// the sheet cannot be created, and as ExamineCdImage does.
void IsoToBinByConverter(const std::string& folder, const std::string& fileName, CConverterRunner& runner,
                         COperation& operation);

}  // namespace vantrel
