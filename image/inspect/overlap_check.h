// Whether anything in an image occupies the sectors of something else.
#pragma once

#include <string>
#include <vector>

#include "image/inspect/disc_tree.h"
#include "image/inspect/limited_lines.h"

namespace vantrel {

/// An area of structures, with its name for messages.
struct SNamedArea {
    SExtent extent;
    std::string name;
};

/// Adds extents of the tree's files that overlap each other or one of the areas. Files may share an extent as a whole.
void CheckOverlaps(const SDiscTree& tree, const std::vector<SNamedArea>& areas, CLimitedLines& problems);

}  // namespace vantrel
