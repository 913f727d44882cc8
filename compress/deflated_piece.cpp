#include "compress/deflated_piece.h"

#include <algorithm>

namespace vantrel {

bool CDeflatedPiece::Allocate(const SBlockSizes& sizes, std::uint32_t blocks) {
    m_sizes = sizes;
    m_input = TryAllocate(std::uint64_t{blocks} * sizes.block);
    m_stored = TryAllocate(std::uint64_t{blocks} * sizes.storedRoom);
    m_blocks.resize(blocks);
    return m_input && m_stored;
}

void CDeflatedPiece::Read(CInputFile& image, std::uint64_t /*first*/, std::uint32_t count) {
    m_count = count;
    const std::span input(m_input.get(), std::size_t{count} * m_sizes.block);
    std::span<const std::uint8_t> rest = input.first(image.Read(input));
    for (SDeflatedBlock& block : std::span(m_blocks).first(count)) {
        block = {};
        block.input = rest.first(std::min<std::size_t>(rest.size(), m_sizes.block));
        rest = rest.subspan(block.input.size());
    }
}

/// What the blocks deflate to is laid end to end, so that no more memory is touched than it takes.
void CDeflatedPiece::Make(CBlockDeflater& deflater) {
    std::span room(m_stored.get(), m_blocks.size() * m_sizes.storedRoom);
    for (SDeflatedBlock& block : std::span(m_blocks).first(m_count)) {
        if (!block.input.empty()) {
            block.outcome = deflater.Run(block.input, room.first(m_sizes.storedRoom));
            block.stored = room.first(block.outcome.produced);
            room = room.subspan(block.outcome.produced);
        }
    }
}

}  // namespace vantrel
