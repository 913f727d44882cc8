// The header of a CSO file.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace vantrel {

/// The 24 bytes at the start of a CSO file; numbers are little-endian.
struct CsoHeader {
    static constexpr std::size_t kSize = 24;

    std::array<std::uint8_t, 4> magic = {'C', 'I', 'S', 'O'};
    std::uint32_t header_size = 0;  ///< Left zero; readers do not depend on it.
    std::uint64_t total_bytes = 0;  ///< Length of the image, a partial last block included.
    std::uint32_t block_size = 2048;
    std::uint8_t version = 1;
    std::uint8_t align = 0;  ///< Index entries are file positions shifted right by this.
    std::array<std::uint8_t, 2> reserved = {};

    std::array<std::uint8_t, kSize> Encode() const;
    static CsoHeader Decode(std::span<const std::uint8_t, kSize> bytes);
    /// Whole blocks of the image; a partial last block is not stored.
    std::uint64_t BlockCount() const { return total_bytes / block_size; }
};

/// Set in an index entry whose block is stored plain.
inline constexpr std::uint32_t kCsoPlainBlock = 0x80000000U;

/// Room of the buffer for a stored block, in blocks.
inline constexpr std::uint32_t kCsoStoredRoom = 2;

/// Bytes of an index entry.
inline constexpr std::uint32_t kCsoEntrySize = 4;

}  // namespace vantrel
