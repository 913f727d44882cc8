// Consecutive blocks of a compressed image: as they are stored, and what they expand to.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "compress/block_sizes.h"
#include "compress/block_stream.h"
#include "compress/buffer.h"

namespace vantrel {

/// A container whose stored blocks can be read, in any order.
class CStoredBlocks {
public:
    virtual ~CStoredBlocks() = default;

    /// Reads block `number` (from 0) as it is stored into the room for it; its length and whether it is stored plain.
    /// False when its bytes are not there, or are more than a block can ever take.
    virtual bool ReadStored(std::uint64_t number, std::span<std::uint8_t> room, std::size_t& size, bool& plain) = 0;
};

struct SInflatedBlock {
    std::span<const std::uint8_t> stored;
    bool wasRead = false;
    bool plain = false;
    SStreamOutcome outcome;                 ///< Of a block that was read and is not plain.
    std::span<const std::uint8_t> content;  ///< As far as it could be had.
};

class CInflatedPiece {
public:
    using Source = CStoredBlocks;
    using Direction = SInflating;
    using Block = SInflatedBlock;

    /// False when the memory cannot be had.
    bool Allocate(const SBlockSizes& sizes, std::uint32_t blocks);

    void Read(CStoredBlocks& container, std::uint64_t first, std::uint32_t count);
    /// Inflates what was read.
    void Make(CBlockInflater& inflater);

    std::span<const SInflatedBlock> Blocks() const { return std::span(m_blocks).first(m_count); }

private:
    SBlockSizes m_sizes;
    Buffer m_stored;
    Buffer m_content;
    std::vector<SInflatedBlock> m_blocks;
    std::size_t m_count = 0;
};

}  // namespace vantrel
