// An edit of an image as data: which files change, where they go, and every byte of the structures that changes with
// them. Nothing is written here, and only what a decision needs is read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "iso/edit/disc_map.h"
#include "iso/image_area.h"
#include "iso/patch.h"

namespace vantrel {

/// New content for a place.
struct SFileChange {
    std::size_t place = 0;  ///< index in the map
    std::int64_t size = 0;  ///< bytes of the new content
    std::string source;     ///< path of the file that holds it
};

struct SEditRules {
    bool keepPlaces = false;  ///< Refuse changes for which a file would have to move.
};

/// A changed file.
struct SFileEdit {
    std::vector<std::string> names;  ///< its paths in the primary volume, or else those in the others
    std::uint32_t from = 0;          ///< first sector before and after
    std::uint32_t to = 0;
    std::int64_t oldSize = 0;  ///< bytes
    std::int64_t newSize = 0;
    std::string source;

    bool IsMoved() const { return to != from; }
};

/// The new image is the base with zeros in `zeros`, then the content of the edits, then the patches; and it has
/// `newLength` bytes.
struct SEditPlan {
    std::int64_t oldLength = 0;
    std::int64_t newLength = 0;
    std::vector<SFileEdit> edits;       ///< in the order of the old sectors
    std::int64_t unchanged = 0;         ///< files of the primary volume without a change
    std::vector<SImageArea> zeros;      ///< ascending; apart from each other and from the new content
    std::vector<SSectorPatch> patches;  ///< a later one replaces bytes of an earlier one

    std::int64_t SectorsAdded() const { return SectorsFor(newLength) - SectorsFor(oldLength); }
};

/// The plan of an image without changes.
SEditPlan PlanNothing(const CByteSource& base);

/// Plans the changes of places in the map, which was read from `base`. A file stays at its sector if its own sectors
/// and free ones directly behind them hold the new content; free sectors belong to nothing and are all zeros. Any other
/// file moves behind the last content of the image; the postgap or the closing anchor then moves, too. No further file
/// moves. What a file leaves becomes zeros. Throws CRefused if the changes cannot be made, or if the image would
/// outgrow its medium.
SEditPlan PlanEdit(CByteSource& base, const SDiscMap& map, std::vector<SFileChange> changes, const SEditRules& rules);

}  // namespace vantrel
