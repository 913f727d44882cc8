#include "compress/block_pipeline.h"

#include <algorithm>

namespace vantrel {

namespace {

std::deque<CBlockStream> StreamsFor(const SWorkPlan& plan, const SStreamSettings& settings) {
    std::deque<CBlockStream> streams;
    for (std::uint32_t i = 0; i < std::max(plan.workers, 1U); ++i) {
        streams.emplace_back(settings, plan.streams);
    }
    return streams;
}

}  // namespace

std::vector<CBlockSlot> AllocateSlots(const SWorkPlan& plan) {
    std::vector<CBlockSlot> slots(plan.SlotCount());
    const bool allocated =
        std::ranges::all_of(slots, [&plan](CBlockSlot& slot) { return slot.Allocate(plan.sizes, plan.blocksPerSlot); });
    return allocated ? std::move(slots) : std::vector<CBlockSlot>();
}

CBlockPipeline::CBlockPipeline(const SWorkPlan& plan, std::vector<CBlockSlot> slots, CInputFile& image,
                               EStreamForm form, int level)
    : CBlockPipeline(
          plan, std::move(slots), {form, level},
          [&image](CBlockSlot& slot, std::uint64_t, std::uint32_t count) { slot.ReadImage(image, count); },
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
    : m_streams(StreamsFor(plan, settings)),
      m_pipeline(
          (plan.blocks + plan.blocksPerSlot - 1) / plan.blocksPerSlot, plan.workers, std::move(slots),
          [perSlot = plan.blocksPerSlot, blocks = plan.blocks, read = std::move(read)](CBlockSlot& slot,
                                                                                       std::uint64_t item) {
              const std::uint64_t first = item * perSlot;
              read(slot, first, static_cast<std::uint32_t>(std::min<std::uint64_t>(perSlot, blocks - first)));
          },
          [this, work](CBlockSlot& slot, std::uint64_t, std::uint32_t worker) { (slot.*work)(m_streams[worker]); }) {}

const SBlock& CBlockPipeline::Next() {
    if (m_blocks.empty()) {
        m_blocks = m_pipeline.Next()->Blocks();
    }
    const SBlock& block = m_blocks.front();
    m_blocks = m_blocks.subspan(1);
    return block;
}

}  // namespace vantrel
