// How the blocks of one conversion are shared among threads, and what memory that takes.
#pragma once

#include <cstdint>

#include "compress/block_sizes.h"
#include "compress/block_stream.h"
#include "compress/compression_request.h"

namespace vantrel {

struct SSharing {
    std::uint32_t workers = 0;
    std::uint32_t blocksPerPiece = 1;
    EStreamUse streams = EStreamUse::Fresh;
};

/// In place, the conversion's own thread works block by block. Otherwise pieces are large enough that handing them over
/// costs nothing, and there are so many workers as were asked for and as fit into a bounded memory.
SSharing SharingOf(const SCompressionRequest& request, const SBlockSizes& sizes);

}  // namespace vantrel
