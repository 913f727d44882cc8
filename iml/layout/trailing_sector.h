// The sector behind the leading structures in the ".ims" file of a DVD layout: the closing anchor of the UDF volume,
// which holds its own sector number.
#pragma once

#include <array>
#include <cstdint>

#include "files/input_file.h"
#include "iso/iso9660.h"

namespace vantrel {

using TrailingSector = std::array<std::uint8_t, kSectorSize>;

/// The last sector of the file; zeros if the file is too short.
TrailingSector ReadTrailingSector(CInputFile& leading);

/// The sector of the image where it belongs: the tag location of its descriptor tag (ECMA-167 3/7.2.8).
std::uint32_t TagLocationOf(const TrailingSector& sector);

}  // namespace vantrel
