#include "compress/work_plan.h"

#include <algorithm>

#include "pipeline/ordered_pipeline.h"

namespace vantrel {

namespace {

/// Bytes of the image in a slot: some milliseconds of compression, and small enough for the processor's caches.
constexpr std::uint32_t kSlotSize = 128U * 1024U;
constexpr std::uint32_t kMaxBlocksPerSlot = 64;
/// Memory limit for all slots and streams together.
constexpr std::uint64_t kMemoryLimit = 48U << 20U;
/// What a thread takes besides its coder.
constexpr std::uint64_t kThreadMemory = 52U << 10U;
/// A piece of a container holds its blocks once expanded, and has twice their size for what is stored of them.
constexpr std::uint32_t kPieceBuffers = 3;

}  // namespace

std::size_t SWorkPlan::SlotCount() const {
    return static_cast<std::size_t>(std::min<std::uint64_t>(SlotsFor(workers), blocks / blocksPerSlot + 1));
}

SWorkPlan PlanWork(std::uint32_t workers, const SBlockSizes& sizes, std::uint64_t blocks, std::uint32_t unit) {
    SWorkPlan plan;
    plan.sizes = sizes;
    plan.blocks = blocks;
    plan.blocksPerSlot = std::max(unit / sizes.block, 1U);
    if (workers == 0) {
        return plan;
    }
    plan.blocksPerSlot = std::max(plan.blocksPerSlot, std::clamp(kSlotSize / sizes.block, 1U, kMaxBlocksPerSlot));
    const std::uint64_t pieceMemory = unit > 1 ? std::uint64_t{kPieceBuffers} * sizes.block : 0;
    const std::uint64_t slotMemory =
        std::uint64_t{plan.blocksPerSlot} * (std::uint64_t{sizes.block} + sizes.stored + pieceMemory);
    const auto limit = static_cast<std::uint32_t>(kMemoryLimit / (2 * slotMemory + sizes.coder + kThreadMemory));
    plan.workers = std::min(workers, std::max(limit, 1U));
    plan.streams = EStreamUse::Reused;
    return plan;
}

}  // namespace vantrel
