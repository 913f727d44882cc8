// Turns an image of 2048-byte sectors into raw sectors, for the converter program and for the direct conversion.
#pragma once

#include <cstdint>

#include "files/checked_file.h"
#include "operation/operation.h"
#include "raw/sector.h"

namespace vantrel {

struct SExpansion {
    ESectorMode mode = ESectorMode::Mode1;
    std::uint32_t imageSectors = 0;
    bool postgap = false;  ///< Append kPostgapSectors sectors of zeros in the same mode.

    std::uint32_t AllSectors() const;
};

/// The expansion of all whole sectors of an image; the bytes of a partial last one are left out. Fails if the sectors
/// and the postgap are more than the addresses of a disc can count.
SExpansion PlanExpansion(const CCheckedInput& image, ESectorMode mode, bool postgap, COperation& operation);

/// Writes the raw sectors of the image and the postgap to the output. One unit of progress is a raw sector. Other
/// threads read and encode ahead of the writing; one is enough unless the image is compressed. Fails if the image
/// cannot be read in full or the output not be written.
void ExpandSectors(CCheckedInput& image, const SExpansion& expansion, CCheckedOutput& output, COperation& operation,
                   std::uint32_t workers = 1);

}  // namespace vantrel
