// Consecutive blocks of an image with what they deflate to.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "compress/block_sizes.h"
#include "compress/block_stream.h"
#include "compress/buffer.h"
#include "files/input_file.h"

namespace vantrel {

struct SDeflatedBlock {
    std::span<const std::uint8_t> input;  ///< Shorter than a block where the image ends, empty behind its end.
    std::span<const std::uint8_t> stored;
    SStreamOutcome outcome;
};

class CDeflatedPiece {
public:
    using Source = CInputFile;
    using Direction = SDeflating;
    using Block = SDeflatedBlock;

    /// False when the memory cannot be had.
    bool Allocate(const SBlockSizes& sizes, std::uint32_t blocks);

    /// Reads blocks where the image stands.
    void Read(CInputFile& image, std::uint64_t first, std::uint32_t count);
    /// Deflates what was read.
    void Make(CBlockDeflater& deflater);

    std::span<const SDeflatedBlock> Blocks() const { return std::span(m_blocks).first(m_count); }

private:
    SBlockSizes m_sizes;
    Buffer m_input;
    Buffer m_stored;
    std::vector<SDeflatedBlock> m_blocks;
    std::size_t m_count = 0;
};

}  // namespace vantrel
