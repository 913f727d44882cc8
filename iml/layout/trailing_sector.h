// The sector that a DVD layout's ".ims" file holds behind the leading structures: the closing anchor of the UDF volume,
// which names its own place in the image.
#pragma once

#include <array>
#include <cstdint>

#include "files/input_file.h"
#include "iml/volume_size.h"

namespace vantrel {

using TrailingSector = std::array<std::uint8_t, kImageSector>;

/// The last sector of the file; zeros where the file is too short to have one.
TrailingSector ReadTrailingSector(CInputFile& leading);

/// The sector of the image at which it belongs: the tag location of its descriptor tag (ECMA-167, 3/7.2.8).
std::uint32_t TrailingPlaceOf(const TrailingSector& sector);

}  // namespace vantrel
