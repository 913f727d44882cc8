// Replaces files in an image of any form, which becomes an ISO image or is changed in place.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "files/output_file.h"
#include "iso/edit/edit_report.h"
#include "operation/operation.h"

namespace vantrel {

/// One file to replace.
struct SReplacement {
    std::string path;    ///< in the image: any case, '/' or '\\' between names, with or without version
    std::string source;  ///< the file with the new content
};

struct SReplaceRequest {
    std::string imagePath;
    std::vector<SReplacement> replacements;
    std::string outputPath;  ///< not used if the image is changed in place
    EOutputManner manner = EOutputManner::CommitNew;
    SEditRules rules;
    bool dryRun = false;  ///< Only report.
};

/// Writes `image`, which was opened from the request's path, with the replacements. `throwIfDamaged` throws CRefused if
/// a read of the image has failed. Fails if a path names no file, or two replacements of one place differ.
SEditReport ReplaceInCopy(const SReplaceRequest& request, CByteSource& image,
                          const std::function<void()>& throwIfDamaged, COperation& operation);

/// The same for an ISO image that is changed where it stands. A failure undoes the change.
SEditReport ReplaceInPlace(const SReplaceRequest& request, COperation& operation);

}  // namespace vantrel
