// The postgap of a PlayStation 2 CD: its form, and the two commands that check and lengthen an image in place.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "files/update_file.h"
#include "operation/operation.h"

namespace vantrel {

/// "postgap": the first bytes of an appended postgap.
inline constexpr std::array<std::uint8_t, 7> kPostgapMark = {'p', 'o', 's', 't', 'g', 'a', 'p'};

struct SPostgapRequest {
    std::string imagePath;
    EUpdateManner manner = EUpdateManner::InPlace;  ///< ReadOnly: CheckPostgap only reports.
    bool strict = false;  ///< Refuse what is certainly not meant, and report what was really done.
    std::optional<int> sectors = std::nullopt;  ///< Sectors to append; AddSelectivePostgap only.
};

/// Reports DVD and UMD images and complete CD images (the image has as many sectors as its volume) as such, and appends
/// a postgap to every other CD image. Fails with code 401 if the image cannot be opened. If strict, fails for files
/// that are no image of these kinds, and for CD images whose length is neither that of their volume nor 150 sectors
/// less; and warns of a missing postgap that the manner ReadOnly leaves missing.
void CheckPostgap(const SPostgapRequest& request, COperation& operation);

/// Appends the requested zero sectors to a UMD image and sets the volume space size of UMD and CD images to the number
/// of their sectors. Returns false, with nothing done, if no number was requested. Fails with the codes 401 and 13000
/// if the image cannot be opened and reopened. If strict, fails for all other images, and the text of the completion
/// says what was done. Not for the manner ReadOnly.
bool AddSelectivePostgap(const SPostgapRequest& request, COperation& operation);

}  // namespace vantrel
