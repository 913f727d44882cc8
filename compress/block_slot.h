// Buffers for consecutive blocks, each in both its forms: expanded, as the image holds it, and stored, as the container
// holds it.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "compress/buffer.h"
#include "compress/work_plan.h"
#include "files/input_file.h"

namespace vantrel {

struct SBlock {
    std::span<const std::uint8_t>
        content;              ///< Expanded bytes: shorter than a block at the image's end or after a fault.
    std::size_t padding = 0;  ///< Zeros at the end of `content` that fill a partial block of an image.
    std::span<const std::uint8_t> stored;
    bool isUnreadable = false;  ///< The stored bytes could not be read.
    bool isPlain = false;       ///< The stored bytes are the content.
    SStreamOutcome outcome;     ///< Of a block that went through zlib.
};

/// A container whose stored blocks can be read in any order.
class CStoredBlocks {
public:
    virtual ~CStoredBlocks() = default;

    /// Reads stored block `number` (from 0) into the buffer; sets `stored` and `isPlain` of `block`. Returns false if
    /// the bytes cannot be read or do not fit the buffer.
    virtual bool ReadStored(std::uint64_t number, std::span<std::uint8_t> buffer, SBlock& block) = 0;
};

class CBlockSlot {
public:
    /// Returns false if allocation fails.
    bool Allocate(const SBlockSizes& sizes, std::uint32_t blocks);

    /// Reads `count` blocks of an image from its current position. Blocks behind its end are empty.
    void ReadImage(CInputFile& image, std::uint32_t count);
    void Deflate(CBlockStream& stream);

    /// Reads `count` blocks of a container, beginning with block `first`.
    void ReadContainer(CStoredBlocks& container, std::uint64_t first, std::uint32_t count);
    void Inflate(CBlockStream& stream);

    /// The blocks that were read last.
    std::span<const SBlock> Blocks() const { return std::span(m_blocks).first(m_count); }

private:
    std::span<SBlock> Renew(std::uint32_t count);
    std::span<std::uint8_t> ContentRoom() const { return {m_content.get(), m_blocks.size() * m_sizes.block}; }
    std::span<std::uint8_t> StoredRoom() const { return {m_stored.get(), m_blocks.size() * m_sizes.stored}; }

    SBlockSizes m_sizes;
    Buffer m_content;
    Buffer m_stored;
    std::vector<SBlock> m_blocks;
    std::size_t m_count = 0;
};

}  // namespace vantrel
