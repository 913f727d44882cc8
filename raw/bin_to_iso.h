// A raw image back into a plain image of its user data.
#pragma once

#include <string>

#include "files/output_file.h"
#include "operation/operation.h"

namespace vantrel {

struct SBinToIsoRequest {
    std::string inputPath;
    std::string outputPath;
    EOutputManner manner = EOutputManner::InPlace;
    /// If true, the input may be a CUE sheet, and everything that the output cannot hold is a failure. If false, only
    /// the first sector is examined, unreadable bytes become zeros, and writes are not checked.
    bool strict = false;
    /// A strict conversion writes damaged sectors as they are, and warns.
    bool ignoreErrors = false;
};

/// The window's request: the output is "new-" + base name + ".iso" in the folder of the input.
SBinToIsoRequest WindowBinToIso(const std::string& folder, const std::string& fileName);

/// Converts all whole sectors. Fails with the codes 2011 and 2021 if a file cannot be opened. If not strict, also fails
/// if the first sector is not a Mode 2 sector, and ignores the bytes of a partial last one. If strict, see
/// ConvertDataTrack.
void BinToIso(const SBinToIsoRequest& request, COperation& operation);

}  // namespace vantrel
