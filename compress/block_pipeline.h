// The blocks of one conversion, deflated or inflated on the threads of its work plan and delivered in order.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "compress/block_slot.h"
#include "compress/work_plan.h"
#include "pipeline/ordered_pipeline.h"

namespace vantrel {

/// The slots for a plan; empty if allocation fails. `image` is the image whose blocks are deflated.
std::vector<CBlockSlot> AllocateSlots(const SWorkPlan& plan, CByteSource* image = nullptr);

/// Reads its source from construction on. The source must outlive the pipeline.
class CBlockPipeline {
public:
    /// Compresses the blocks of an image. `slots` are those of the plan and of the image.
    CBlockPipeline(const SWorkPlan& plan, std::vector<CBlockSlot> slots, EStreamForm form, int level);
    /// Inflates the blocks of a container.
    CBlockPipeline(const SWorkPlan& plan, std::vector<CBlockSlot> slots, CStoredBlocks& container, EStreamForm form);

    /// The next block, valid until the next call. There must be one left.
    const SBlock& Next();
    /// Why the image could not be read in the slot of the latest block; empty if it could.
    std::string ImageProblem() const { return m_slot->ImageProblem(); }

private:
    using Reader = std::function<void(CBlockSlot& slot, std::uint64_t first, std::uint32_t count)>;
    using Worker = void (CBlockSlot::*)(CBlockCoder& coder);

    CBlockPipeline(const SWorkPlan& plan, std::vector<CBlockSlot> slots, const SStreamSettings& settings, Reader read,
                   Worker work);

    std::vector<std::unique_ptr<CBlockCoder>> m_coders;  ///< One for each worker, or one in all.
    COrderedPipeline<CBlockSlot> m_pipeline;
    const CBlockSlot* m_slot = nullptr;
    std::span<const SBlock> m_blocks;  ///< What is left of the current slot.
};

}  // namespace vantrel
