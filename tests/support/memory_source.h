// An image in memory, for tests of readers.
#pragma once

#include <algorithm>

#include "files/byte_source.h"
#include "tests/support/test_folder.h"

namespace vantrel::test {

class CMemorySource : public CByteSource {
public:
    /// Zeros up to `size` follow the bytes if that is more than their number.
    explicit CMemorySource(Bytes bytes, std::int64_t size = 0)
        : m_bytes(std::move(bytes)), m_size(std::max(size, static_cast<std::int64_t>(m_bytes.size()))) {}

    std::int64_t Size() const override { return m_size; }

    std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) override {
        if (position < 0 || position >= m_size) {
            return 0;
        }
        const auto count =
            static_cast<std::size_t>(std::min(m_size - position, static_cast<std::int64_t>(buffer.size())));
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t at = static_cast<std::size_t>(position) + i;
            buffer[i] = at < m_bytes.size() ? m_bytes[at] : std::uint8_t{0};
        }
        return count;
    }

private:
    Bytes m_bytes;
    std::int64_t m_size;
};

}  // namespace vantrel::test
