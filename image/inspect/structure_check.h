// Whether the structures of an image describe it: its ISO 9660, Joliet and UDF directories, path tables and lengths.
//
// This finds what readers of an image take for granted, and what a careless change of an image breaks. It does not
// judge whether a disc follows the standards in other respects.
#pragma once

#include <string>
#include <vector>

#include "files/byte_source.h"

namespace vantrel {

/// What is wrong, each as a line that names the file or structure. The image must be readable.
std::vector<std::string> StructureProblems(CByteSource& image);

}  // namespace vantrel
