// The header of a DAX file, and the sizes of its frames and table entries.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "compress/work_plan.h"

namespace vantrel {

inline constexpr std::uint32_t kDaxFrameSize = 8192;
/// Buffer size for a stored frame: more than a deflated frame ever takes.
inline constexpr std::uint32_t kDaxStoredRoom = 9216;
inline constexpr SBlockSizes kDaxFrameSizes = {kDaxFrameSize, kDaxStoredRoom};
/// Bytes of an entry in the position table and in the length table.
inline constexpr std::uint32_t kDaxPositionSize = 4;
inline constexpr std::uint32_t kDaxLengthSize = 2;
/// Bytes of an entry in the list of plain areas: first frame, number of frames.
inline constexpr std::uint32_t kDaxAreaSize = 8;
/// The version whose header counts plain areas.
inline constexpr std::uint32_t kDaxVersionWithAreas = 1;

/// The 32 bytes at the start of a DAX file; numbers are little-endian. The position table follows, then the length
/// table, then (in version 1) the list of plain areas, then the frames.
struct DaxHeader {
    static constexpr std::size_t kSize = 32;
    static constexpr std::uint32_t kMagic = 0x00584144U;  ///< "DAX" and a zero byte

    std::uint32_t magic = kMagic;
    std::uint32_t image_size = 0;  ///< Length of the image in bytes.
    std::uint32_t version = 0;
    std::uint32_t area_count = 0;  ///< In version 1: runs of frames that are stored plain.

    std::array<std::uint8_t, kSize> Encode() const;
    static DaxHeader Decode(std::span<const std::uint8_t, kSize> bytes);
    /// Frames of the image, including a partial last one.
    std::uint32_t FrameCount() const { return image_size / kDaxFrameSize + (image_size % kDaxFrameSize != 0 ? 1 : 0); }
    /// Bytes of the image in a frame (from 0): fewer than 8192 only in a partial last one.
    std::size_t ContentSize(std::uint32_t frame) const {
        return std::min(image_size - frame * kDaxFrameSize, kDaxFrameSize);
    }
};

}  // namespace vantrel
