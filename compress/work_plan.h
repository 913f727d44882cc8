// How a conversion divides its blocks among threads, and how much memory that takes.
#pragma once

#include <cstdint>

#include "compress/block_stream.h"

namespace vantrel {

struct SBlockSizes {
    std::uint32_t block = 0;            ///< Bytes of an expanded block; the last block of an image may be shorter.
    std::uint32_t stored = 0;           ///< Buffer size for a stored block: more than it ever takes.
    bool pads = false;                  ///< A partial last block is filled with zeros before it is deflated.
    std::uint32_t coder = 268U << 10U;  ///< Bytes that the coder of a thread takes; by default a deflate stream.
};

struct SWorkPlan {
    SBlockSizes sizes;
    std::uint64_t blocks = 0;   ///< All blocks of the conversion.
    std::uint32_t workers = 0;  ///< Threads besides the conversion's own.
    std::uint32_t blocksPerSlot = 1;
    EStreamUse streams = EStreamUse::Fresh;

    /// Number of slots that the pipeline needs.
    std::size_t SlotCount() const;
};

/// Without workers, the conversion's own thread processes block by block, each with a fresh stream. Otherwise slots are
/// large enough to make handing them over cheap, streams are reused, and there are at most `workers` workers, fewer if
/// their slots and streams would exceed a fixed amount of memory. `unit` is the PieceUnit of the image that is read: a
/// slot holds whole units.
SWorkPlan PlanWork(std::uint32_t workers, const SBlockSizes& sizes, std::uint64_t blocks, std::uint32_t unit = 1);

}  // namespace vantrel
