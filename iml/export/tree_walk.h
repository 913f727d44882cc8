// The directory tree as the console program's export uses it: complete, and checked against the other structures.
#pragma once

#include <string>
#include <vector>

#include "files/byte_source.h"
#include "iml/export/walked_file.h"
#include "operation/operation.h"

namespace vantrel {

struct STreeWalk {
    std::uint32_t headerSectors = 0;  ///< up to the end of the last structure that precedes the files
    std::vector<SWalkedFile> files;
    std::vector<std::string> notices;  ///< what the layout cannot represent and what contradicts itself
};

/// Walks the tree of the primary volume. Fails for an image without a root directory (code 9999) or one that ends
/// before its directories do.
STreeWalk WalkTree(CByteSource& image, const std::string& imagePath, COperation& operation);

}  // namespace vantrel
