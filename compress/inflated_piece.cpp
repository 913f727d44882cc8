#include "compress/inflated_piece.h"

namespace vantrel {

bool CInflatedPiece::Allocate(const SBlockSizes& sizes, std::uint32_t blocks) {
    m_sizes = sizes;
    m_stored = TryAllocate(std::uint64_t{blocks} * sizes.storedRoom);
    m_content = TryAllocate(std::uint64_t{blocks} * sizes.block);
    m_blocks.resize(blocks);
    return m_stored && m_content;
}

void CInflatedPiece::Read(CStoredBlocks& container, std::uint64_t first, std::uint32_t count) {
    m_count = count;
    std::span room(m_stored.get(), m_blocks.size() * m_sizes.storedRoom);
    for (SInflatedBlock& block : std::span(m_blocks).first(count)) {
        block = {};
        std::size_t size = 0;
        block.wasRead = container.ReadStored(first++, room.first(m_sizes.storedRoom), size, block.plain);
        if (block.wasRead) {
            block.stored = room.first(size);
            room = room.subspan(size);
        }
    }
}

void CInflatedPiece::Make(CBlockInflater& inflater) {
    std::span room(m_content.get(), m_blocks.size() * m_sizes.block);
    for (SInflatedBlock& block : std::span(m_blocks).first(m_count)) {
        if (!block.wasRead) {
            continue;
        }
        if (block.plain) {
            block.content = block.stored;
        } else {
            block.outcome = inflater.Run(block.stored, room.first(m_sizes.block));
            block.content = room.first(block.outcome.produced);
            room = room.subspan(block.outcome.produced);
        }
    }
}

}  // namespace vantrel
