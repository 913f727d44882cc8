#include "compress/block_pipeline.h"

#include <algorithm>

namespace vantrel {

namespace {

std::vector<std::unique_ptr<CBlockCoder>> CodersFor(const SWorkPlan& plan, const SStreamSettings& settings) {
    std::vector<std::unique_ptr<CBlockCoder>> coders;
    for (std::uint32_t i = 0; i < std::max(plan.workers, 1U); ++i) {
        coders.push_back(NewCoder(settings, plan.streams));
    }
    return coders;
}

}  // namespace

std::vector<CBlockSlot> AllocateSlots(const SWorkPlan& plan, CByteSource* image) {
    std::vector<CBlockSlot> slots(plan.SlotCount());
    const bool allocated = std::ranges::all_of(
        slots, [&](CBlockSlot& slot) { return slot.Allocate(plan.sizes, plan.blocksPerSlot, image); });
    return allocated ? std::move(slots) : std::vector<CBlockSlot>();
}

CBlockPipeline::CBlockPipeline(const SWorkPlan& plan, std::vector<CBlockSlot> slots, EStreamForm form, int level)
    : CBlockPipeline(
          plan, std::move(slots), {form, level},
          [](CBlockSlot& slot, std::uint64_t first, std::uint32_t count) { slot.LoadImage(first, count); },
          &CBlockSlot::Deflate) {}

CBlockPipeline::CBlockPipeline(const SWorkPlan& plan, std::vector<CBlockSlot> slots, CStoredBlocks& container,
                               EStreamForm form)
    : CBlockPipeline(
          plan, std::move(slots), {form, std::nullopt},
          [&container](CBlockSlot& slot, std::uint64_t first, std::uint32_t count) {
              slot.ReadContainer(container, first, count);
          },
          &CBlockSlot::Inflate) {}

CBlockPipeline::CBlockPipeline(const SWorkPlan& plan, std::vector<CBlockSlot> slots, const SStreamSettings& settings,
                               Reader read, Worker work)
    : m_coders(CodersFor(plan, settings)),
      m_pipeline(
          (plan.blocks + plan.blocksPerSlot - 1) / plan.blocksPerSlot, plan.workers, std::move(slots),
          [perSlot = plan.blocksPerSlot, blocks = plan.blocks, read = std::move(read)](CBlockSlot& slot,
                                                                                       std::uint64_t item) {
              const std::uint64_t first = item * perSlot;
              read(slot, first, static_cast<std::uint32_t>(std::min<std::uint64_t>(perSlot, blocks - first)));
          },
          [this, work](CBlockSlot& slot, std::uint64_t, std::uint32_t worker) { (slot.*work)(*m_coders[worker]); }) {}

const SBlock& CBlockPipeline::Next() {
    if (m_blocks.empty()) {
        m_slot = m_pipeline.Next();
        m_blocks = m_slot->Blocks();
    }
    const SBlock& block = m_blocks.front();
    m_blocks = m_blocks.subspan(1);
    return block;
}

}  // namespace vantrel
