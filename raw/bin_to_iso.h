// A raw image of 2352-byte Mode 2 Form 1 sectors back into a plain image of their user data.
#pragma once

#include <string>

#include "files/output_file.h"
#include "operation/operation.h"

namespace vantrel {

struct SBinToIsoRequest {
    std::string inputPath;
    std::string outputPath;
    EOutputManner manner = EOutputManner::InPlace;
};

/// The names that the window gives: "new-" + base name + ".iso" beside the input.
SBinToIsoRequest WindowBinToIso(const std::string& folder, const std::string& fileName);

/// Converts whole sectors; bytes of a partial last one are left out. Only the first sector is examined.
void BinToIso(const SBinToIsoRequest& request, COperation& operation);

}  // namespace vantrel
