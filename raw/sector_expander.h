// The work of turning an image of 2048-byte sectors into raw sectors, as both the converter program and the console
// program need it.
#pragma once

#include <cstdint>
#include <functional>

#include "files/input_file.h"
#include "files/output_file.h"
#include "raw/sector.h"

namespace vantrel {

struct SExpansion {
    ESectorMode mode = ESectorMode::Mode1;
    std::uint32_t sectors = 0;  ///< Sectors of the image.
    bool postgap = false;       ///< Add 150 sectors of zeros in the same form.

    std::uint32_t AllSectors() const { return sectors + (postgap ? kRawPostgapSectors : 0); }
};

enum class EExpanded { Whole, ReadFailed, WriteFailed };

/// Reads the image from its start and writes its raw sectors, and the postgap, to the output. Reading and encoding run
/// ahead of the writing on a second thread. `onProgress` is called on the calling thread after each write, with the
/// number of raw sectors written so far; it may throw.
EExpanded ExpandSectors(CInputFile& image, const SExpansion& expansion, COutputFile& output,
                        const std::function<void(std::uint32_t sectorsDone)>& onProgress);

}  // namespace vantrel
