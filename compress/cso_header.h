// The header of a CSO file.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "iso/iso9660.h"

namespace vantrel {

/// The 24 bytes at the start of a CSO file; numbers are little-endian.
struct CsoHeader {
    static constexpr std::size_t kSize = 24;

    std::array<std::uint8_t, 4> magic = {'C', 'I', 'S', 'O'};
    std::uint32_t header_size = 0;  ///< Written as 0; readers ignore it.
    std::uint64_t total_bytes = 0;  ///< Length of the image, including a partial last block.
    std::uint32_t block_size = kSectorSize;
    std::uint8_t version = 1;
    std::uint8_t align = 0;  ///< Index entries are file positions shifted right by this number of bits.
    std::array<std::uint8_t, 2> reserved = {};

    std::array<std::uint8_t, kSize> Encode() const;
    static CsoHeader Decode(std::span<const std::uint8_t, kSize> bytes);
    /// Whole blocks of the image; a partial last block is not stored.
    std::uint64_t BlockCount() const { return total_bytes / block_size; }
};

/// Set in the index entry of a block that is stored plain.
inline constexpr std::uint32_t kCsoPlainBlock = 0x80000000U;

/// Buffer size for a stored block, in blocks.
inline constexpr std::uint32_t kCsoStoredRoom = 2;

}  // namespace vantrel
