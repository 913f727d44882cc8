#include "compress/block_slot.h"

#include <algorithm>

namespace vantrel {

bool CBlockSlot::Allocate(const SBlockSizes& sizes, std::uint32_t blocks) {
    m_sizes = sizes;
    m_content = TryAllocate(std::uint64_t{blocks} * sizes.block);
    m_stored = TryAllocate(std::uint64_t{blocks} * sizes.stored);
    m_blocks.resize(blocks);
    return m_content && m_stored;
}

std::span<SBlock> CBlockSlot::Renew(std::uint32_t count) {
    m_count = count;
    const std::span blocks = std::span(m_blocks).first(count);
    std::ranges::fill(blocks, SBlock());
    return blocks;
}

void CBlockSlot::ReadImage(CInputFile& image, std::uint32_t count) {
    const auto room = ContentRoom().first(std::size_t{count} * m_sizes.block);
    const std::size_t length = image.Read(room);
    std::ranges::fill(room.subspan(length), std::uint8_t{0});
    std::span<const std::uint8_t> rest = room.first(length);
    for (SBlock& block : Renew(count)) {
        block.content = rest.first(std::min<std::size_t>(rest.size(), m_sizes.block));
        rest = rest.subspan(block.content.size());
        if (m_sizes.pads && !block.content.empty()) {
            block.padding = m_sizes.block - block.content.size();
            block.content = {block.content.data(), m_sizes.block};
        }
    }
}

/// Results lie end to end, so that the slot touches no more memory than they take.
void CBlockSlot::Deflate(CBlockStream& stream) {
    std::span room = StoredRoom();
    for (SBlock& block : std::span(m_blocks).first(m_count)) {
        if (!block.content.empty()) {
            block.outcome = stream.Run(block.content, room.first(m_sizes.stored));
            block.stored = room.first(block.outcome.produced);
            room = room.subspan(block.outcome.produced);
        }
    }
}

void CBlockSlot::ReadContainer(CStoredBlocks& container, std::uint64_t first, std::uint32_t count) {
    std::span room = StoredRoom();
    for (SBlock& block : Renew(count)) {
        block.isUnreadable = !container.ReadStored(first++, room.first(m_sizes.stored), block);
        room = room.subspan(block.stored.size());
    }
}

void CBlockSlot::Inflate(CBlockStream& stream) {
    std::span room = ContentRoom();
    for (SBlock& block : std::span(m_blocks).first(m_count)) {
        if (block.isPlain) {
            block.content = block.stored;
        } else if (!block.isUnreadable) {
            block.outcome = stream.Run(block.stored, room.first(m_sizes.block));
            block.content = room.first(block.outcome.produced);
            room = room.subspan(block.outcome.produced);
        }
    }
}

}  // namespace vantrel
