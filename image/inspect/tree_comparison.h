// Whether two directory trees of an image, such as ISO 9660 and UDF, describe the same files.
#pragma once

#include "image/inspect/disc_tree.h"
#include "image/inspect/limited_lines.h"

namespace vantrel {

/// Adds each file whose place or length differs in `other` from that in `tree`. A file may be missing from one tree,
/// and its name may be another one: a tree with short names is as good as one with long names.
void CompareTrees(const SDiscTree& tree, const SDiscTree& other, CLimitedLines& problems);

}  // namespace vantrel
