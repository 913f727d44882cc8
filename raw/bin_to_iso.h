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
    /// Bytes that cannot be read or written are a failure, and a partial last sector is reported. If false, unreadable
    /// bytes become zeros and writes are not checked.
    bool strict = false;
};

/// The window's request: the output is "new-" + base name + ".iso" in the folder of the input.
SBinToIsoRequest WindowBinToIso(const std::string& folder, const std::string& fileName);

/// Converts all whole sectors and ignores the bytes of a partial last one. Fails with the codes 2011 and 2021 if a file
/// cannot be opened, and if the first sector, the only one that is checked, is not a Mode 2 sector.
void BinToIso(const SBinToIsoRequest& request, COperation& operation);

}  // namespace vantrel
