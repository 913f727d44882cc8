#include "image/block_image.h"

#include <algorithm>

namespace vantrel {

void CBlockImage::SetGeometry(std::int64_t size, std::uint32_t blockSize) {
    m_size = size;
    m_blockSize = blockSize;
}

bool CBlockImage::MakeCurrent(std::uint64_t number) {
    if (number == m_current) {
        return true;
    }
    m_current = kNoBlock;
    if (!LoadBlock(number, m_content, m_fault)) {
        return false;
    }
    m_current = number;
    return true;
}

std::size_t CBlockImage::ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) {
    std::size_t done = 0;
    while (position >= 0 && position < m_size && done < buffer.size()) {
        const auto place = static_cast<std::uint64_t>(position);
        if (!MakeCurrent(place / m_blockSize)) {
            break;
        }
        const auto offset = static_cast<std::size_t>(place % m_blockSize);
        if (offset >= m_content.size()) {
            break;
        }
        const std::size_t left = static_cast<std::size_t>(std::min<std::int64_t>(m_size - position, m_blockSize));
        const std::size_t count = std::min({buffer.size() - done, m_content.size() - offset, left});
        std::copy_n(m_content.begin() + static_cast<std::ptrdiff_t>(offset), count,
                    buffer.begin() + static_cast<std::ptrdiff_t>(done));
        done += count;
        position += static_cast<std::int64_t>(count);
    }
    return done;
}

}  // namespace vantrel
