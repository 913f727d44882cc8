// The header of a CSO file, and of a ZSO file, which has the same layout.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "compress/work_plan.h"
#include "iso/iso9660.h"

namespace vantrel {

using CsoMagic = std::array<std::uint8_t, 4>;
inline constexpr CsoMagic kCsoMagic = {'C', 'I', 'S', 'O'};
inline constexpr CsoMagic kZsoMagic = {'Z', 'I', 'S', 'O'};

/// The version of CSO whose blocks are LZ4 or deflate data.
inline constexpr std::uint8_t kCsoVersionWithLz4 = 2;

/// The 24 bytes at the start of the file; numbers are little-endian.
struct CsoHeader {
    static constexpr std::size_t kSize = 24;

    CsoMagic magic = kCsoMagic;
    std::uint32_t header_size = 0;  ///< CSO 1: written as 0, ignored by readers. CSO 2 and ZSO: 24.
    std::uint64_t total_bytes = 0;  ///< Length of the image, including a partial last block.
    std::uint32_t block_size = kSectorSize;
    std::uint8_t version = 1;
    std::uint8_t align = 0;  ///< Index entries are file positions shifted right by this number of bits.
    std::array<std::uint8_t, 2> reserved = {};

    std::array<std::uint8_t, kSize> Encode() const;
    static CsoHeader Decode(std::span<const std::uint8_t, kSize> bytes);
    bool IsZso() const { return magic == kZsoMagic; }
    /// "CSO" or "ZSO"
    const char* FormName() const { return IsZso() ? "ZSO" : "CSO"; }
    std::uint64_t WholeBlockCount() const { return total_bytes / block_size; }
    /// Blocks of the image, including a partial last one.
    std::uint64_t BlockCount() const { return WholeBlockCount() + (total_bytes % block_size != 0 ? 1 : 0); }
    /// Bytes of the image in a block (from 0): fewer than a block only in a partial last one.
    std::size_t ContentSize(std::uint64_t block) const {
        return static_cast<std::size_t>(std::min<std::uint64_t>(total_bytes - block * block_size, block_size));
    }
};

/// Set in the index entry of a block that is stored plain; in CSO 2, of an LZ4 block.
inline constexpr std::uint32_t kCsoMarkedBlock = 0x80000000U;
inline constexpr std::uint32_t kCsoPositionMask = ~kCsoMarkedBlock;

/// Sizes of blocks. The buffer for a stored block is larger than any deflated block. The compressor fills a partial
/// last block with zeros.
constexpr SBlockSizes CsoBlockSizes(std::uint32_t blockSize) {
    return {blockSize, 2 * blockSize, true};
}

}  // namespace vantrel
