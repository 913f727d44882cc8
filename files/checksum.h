// Length and CRC-32 of a file's content, to recognise it later.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "files/byte_source.h"

namespace vantrel {

struct SChecksum {
    std::int64_t length = 0;
    std::uint32_t crc32 = 0;

    /// Takes in the next bytes.
    void Add(std::span<const std::uint8_t> bytes);
    /// Takes in the content that another checksum describes, as if its bytes followed.
    void Append(const SChecksum& next);
    bool operator==(const SChecksum&) const = default;
};

/// The checksum of a source from its start to its end, or to the first byte that cannot be read. Calls `afterPiece`
/// after each mebibyte.
SChecksum ChecksumOf(CByteSource& source, const std::function<void()>& afterPiece);

}  // namespace vantrel
