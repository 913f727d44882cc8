// Buffers for consecutive blocks, each in both its forms: expanded, as the image holds it, and stored, as the container
// holds it.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "compress/buffer.h"
#include "compress/work_plan.h"
#include "files/byte_source.h"

namespace vantrel {

/// How a container stores a block.
enum class EStoredAs : std::uint8_t { Stream, Plain, Lz4 };

struct SBlock {
    std::span<const std::uint8_t>
        content;              ///< Expanded bytes: shorter than a block at the image's end or after a fault.
    std::size_t padding = 0;  ///< Zeros at the end of `content` that fill a partial block of an image.
    std::span<const std::uint8_t> stored;
    std::size_t imageSize = 0;  ///< Bytes of the image in the block, if the container knows them.
    bool isUnreadable = false;  ///< The stored bytes could not be read.
    EStoredAs storedAs = EStoredAs::Stream;
    SStreamOutcome outcome;  ///< Of a block that was compressed or expanded.
};

/// A container whose stored blocks can be read in any order.
class CStoredBlocks {
public:
    virtual ~CStoredBlocks() = default;

    /// Reads stored block `number` (from 0) into the buffer; sets `stored` and `storedAs` of `block`. May set
    /// `imageSize`. Returns false if the bytes cannot be read or do not fit the buffer.
    virtual bool ReadStored(std::uint64_t number, std::span<std::uint8_t> buffer, SBlock& block) = 0;
};

/// Reads stored blocks, the first of them number `first`, end to end into `room`, which has `storedRoom` bytes for
/// each.
void ReadStoredBlocks(CStoredBlocks& container, std::uint64_t first, std::span<SBlock> blocks,
                      std::span<std::uint8_t> room, std::size_t storedRoom);

/// Expands a stored block into `room`. The content of a plain block stays where it was read.
void ExpandStoredBlock(SBlock& block, CBlockCoder& coder, std::span<std::uint8_t> room);

class CBlockSlot {
public:
    /// Returns false if allocation fails. `image` is the source of LoadImage; null for a container's blocks.
    bool Allocate(const SBlockSizes& sizes, std::uint32_t blocks, CByteSource* image = nullptr);

    /// Loads `count` blocks of the image, beginning with block `first`. Blocks behind its end are empty.
    void LoadImage(std::uint64_t first, std::uint32_t count);
    /// Compresses the blocks that were loaded.
    void Deflate(CBlockCoder& coder);
    /// Why the image could not be read; empty if it could.
    std::string ImageProblem() const { return m_piece->Problem(); }

    /// Reads `count` blocks of a container, beginning with block `first`.
    void ReadContainer(CStoredBlocks& container, std::uint64_t first, std::uint32_t count);
    /// Expands the blocks that were read.
    void Inflate(CBlockCoder& coder);

    /// The blocks that were read last.
    std::span<const SBlock> Blocks() const { return std::span(m_blocks).first(m_count); }

private:
    std::span<SBlock> Renew(std::uint32_t count);
    void DivideImage();
    std::span<std::uint8_t> ContentRoom() const { return {m_content.get(), m_blocks.size() * m_sizes.block}; }
    std::span<std::uint8_t> StoredRoom() const { return {m_stored.get(), m_blocks.size() * m_sizes.stored}; }

    SBlockSizes m_sizes;
    Buffer m_content;
    Buffer m_stored;
    std::unique_ptr<CSourcePiece> m_piece;
    std::vector<SBlock> m_blocks;
    std::size_t m_count = 0;
};

}  // namespace vantrel
