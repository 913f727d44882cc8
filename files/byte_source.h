// Random read access to a sequence of bytes: a file, or the image inside a compressed file.
#pragma once

#include <cstdint>
#include <span>

namespace vantrel {

class CInputFile;

class CByteSource {
public:
    virtual ~CByteSource() = default;

    /// Length in bytes, −1 if unknown.
    virtual std::int64_t Size() const = 0;

    /// Reads from a byte position. Returns the number of bytes read: fewer than the buffer holds only at the end or
    /// after an error, 0 for a negative position. The rest of the buffer is unchanged.
    virtual std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) = 0;

    /// The file that holds these bytes at the same positions; null if there is none.
    virtual CInputFile* PlainFile() { return nullptr; }
};

}  // namespace vantrel
