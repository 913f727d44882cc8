// The postgap of a PlayStation 2 CD: its form, and the two commands that examine and lengthen an image where it stands.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "files/update_file.h"
#include "operation/operation.h"

namespace vantrel {

inline constexpr std::int64_t kPostgapSectors = 150;

/// "postgap": the first bytes of a postgap that was appended here.
inline constexpr std::array<std::uint8_t, 7> kPostgapMark = {'p', 'o', 's', 't', 'g', 'a', 'p'};

struct SPostgapRequest {
    std::string imagePath;
    EUpdateManner manner =
        EUpdateManner::InPlace;  ///< ReadOnly: report what CheckPostgap would do, and change nothing.
};

/// Tells DVD and UMD images and complete CD images (image sectors equal to the volume space size) as such, and appends
/// a postgap to any other CD image.
void CheckPostgap(const SPostgapRequest& request, COperation& operation);

/// Appends as many zero sectors as the compression level says to a UMD image, and makes the volume space size of UMD
/// and CD images that of their length. Does nothing when no level is selected. Never with the manner ReadOnly.
void AddSelectivePostgap(const SPostgapRequest& request, COperation& operation);

}  // namespace vantrel
