// An image in memory, for tests of readers.
#pragma once

#include <algorithm>
#include <utility>

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
        const auto wanted = static_cast<std::int64_t>(buffer.size());
        const auto count = static_cast<std::size_t>(std::min(m_size - position, wanted));
        const std::size_t start = std::min(static_cast<std::size_t>(position), m_bytes.size());
        const std::size_t known = std::min(count, m_bytes.size() - start);
        const auto end = std::copy_n(m_bytes.begin() + static_cast<std::ptrdiff_t>(start), known, buffer.begin());
        std::fill_n(end, count - known, std::uint8_t{0});
        return count;
    }

private:
    Bytes m_bytes;
    std::int64_t m_size;
};

/// An image in a container, for which there is no memory to expand it.
class CSourceWithoutMemory : public CMemorySource {
public:
    using CMemorySource::CMemorySource;

    std::unique_ptr<CSourcePiece> NewPiece(std::size_t /*size*/) override { return nullptr; }
};

}  // namespace vantrel::test
