// The blocks of one conversion, deflated or inflated on the threads of its work plan and delivered in order.
#pragma once

#include <deque>
#include <functional>
#include <span>
#include <vector>

#include "compress/block_slot.h"
#include "compress/work_plan.h"
#include "pipeline/ordered_pipeline.h"

namespace vantrel {

/// The slots for a plan; empty if allocation fails.
std::vector<CBlockSlot> AllocateSlots(const SWorkPlan& plan);

/// Reads its source from construction on. The source must outlive the pipeline.
class CBlockPipeline {
public:
    /// Deflates the blocks of an image from its current position. `slots` are those of the plan.
    CBlockPipeline(const SWorkPlan& plan, std::vector<CBlockSlot> slots, CInputFile& image, EStreamForm form,
                   int level);
    /// Inflates the blocks of a container.
    CBlockPipeline(const SWorkPlan& plan, std::vector<CBlockSlot> slots, CStoredBlocks& container, EStreamForm form);

    /// The next block, valid until the next call. There must be one left.
    const SBlock& Next();

private:
    using Reader = std::function<void(CBlockSlot& slot, std::uint64_t first, std::uint32_t count)>;
    using Worker = void (CBlockSlot::*)(CBlockStream& stream);

    CBlockPipeline(const SWorkPlan& plan, std::vector<CBlockSlot> slots, const SStreamSettings& settings, Reader read,
                   Worker work);

    std::deque<CBlockStream> m_streams;  ///< One for each worker, or one in all; streams cannot be moved.
    COrderedPipeline<CBlockSlot> m_pipeline;
    std::span<const SBlock> m_blocks;  ///< What is left of the current slot.
};

}  // namespace vantrel
