#include "files/checksum.h"

#include <zlib.h>

#include <vector>

namespace vantrel {

void SChecksum::Add(std::span<const std::uint8_t> bytes) {
    length += static_cast<std::int64_t>(bytes.size());
    crc32 = static_cast<std::uint32_t>(crc32_z(crc32, bytes.data(), bytes.size()));
}

void SChecksum::Append(const SChecksum& next) {
    // On Windows, the library takes lengths of 31 bits.
    constexpr std::int64_t kLongestStep = 1 << 30;
    std::int64_t left = next.length;
    for (; left > kLongestStep; left -= kLongestStep) {
        crc32 = static_cast<std::uint32_t>(crc32_combine(crc32, 0, static_cast<z_off_t>(kLongestStep)));
    }
    crc32 = static_cast<std::uint32_t>(crc32_combine(crc32, next.crc32, static_cast<z_off_t>(left)));
    length += next.length;
}

SChecksum ChecksumOf(CByteSource& source, const std::function<void()>& afterPiece) {
    constexpr std::size_t kPieceSize = 1U << 20U;
    std::vector<std::uint8_t> piece(kPieceSize);
    SChecksum sum;
    std::size_t count = kPieceSize;
    while (count == kPieceSize) {
        count = source.ReadAt(sum.length, piece);
        sum.Add(std::span(piece).first(count));
        afterPiece();
    }
    return sum;
}

}  // namespace vantrel
