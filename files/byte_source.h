// Something with a length whose bytes can be read by position: a file, or the image inside a compressed one.
#pragma once

#include <cstdint>
#include <span>

namespace vantrel {

class CInputFile;

class CByteSource {
public:
    virtual ~CByteSource() = default;

    /// Length in bytes, −1 when it cannot be told.
    virtual std::int64_t Size() const = 0;

    /// Reads from a byte position on; the number of bytes read, smaller than the buffer only at the end or after an
    /// error, 0 for a negative position. The rest of the buffer is left as it was.
    virtual std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) = 0;

    /// The file in which these very bytes stand at the same positions; null when there is none.
    virtual CInputFile* PlainFile() { return nullptr; }
};

}  // namespace vantrel
