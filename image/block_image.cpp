#include "image/block_image.h"

#include <algorithm>

#include "files/refused.h"

namespace vantrel {

void CBlockPiece::Load(std::int64_t position, std::span<std::uint8_t> room) {
    const std::uint64_t blocks =
        (static_cast<std::uint64_t>(m_geometry.size) + m_geometry.blockSize - 1) / m_geometry.blockSize;
    m_first = static_cast<std::uint64_t>(position) / m_geometry.blockSize;
    const std::uint64_t left = blocks - std::min(blocks, m_first);
    m_count = static_cast<std::size_t>(std::min<std::uint64_t>(room.size() / m_geometry.blockSize, left));
    LoadBlocks(m_first, m_count);
}

std::size_t CBlockPiece::Expand(std::span<std::uint8_t> room) {
    m_fault.clear();
    std::size_t expanded = 0;
    while (expanded < m_count &&
           ExpandBlock(expanded, room.subspan(expanded * m_geometry.blockSize, m_geometry.blockSize), m_fault)) {
        ++expanded;
    }
    m_faulty = m_first + expanded;
    const std::int64_t start = static_cast<std::int64_t>(m_first) * m_geometry.blockSize;
    const std::int64_t left = std::max<std::int64_t>(m_geometry.size - start, 0);
    return static_cast<std::size_t>(
        std::min<std::int64_t>(static_cast<std::int64_t>(expanded) * m_geometry.blockSize, left));
}

std::string CBlockPiece::Problem() const {
    return m_fault.empty()
               ? m_fault
               : m_geometry.path + ": damaged " + m_geometry.noun + " " + std::to_string(m_faulty) + ": " + m_fault;
}

std::unique_ptr<CSourcePiece> CBlockImage::NewPiece(std::size_t size) {
    return NewBlocks(std::max<std::size_t>(size / m_geometry.blockSize, 1));
}

/// Reads one block into a room of its size. Returns the bytes that the image has of it, 0 if it is unreadable.
std::size_t CBlockImage::ReadBlock(std::uint64_t number, std::span<std::uint8_t> room) {
    if (!m_piece) {
        m_piece = NewBlocks(1);
    }
    if (!m_piece) {
        throw CRefused(m_geometry.path + ": not enough memory for a " + m_geometry.noun);
    }
    m_piece->Load(static_cast<std::int64_t>(number * m_geometry.blockSize), room);
    const std::size_t length = m_piece->Expand(room);
    if (!m_piece->Fault().empty()) {
        m_fault = m_piece->Fault();
        m_problem = m_piece->Problem();
    }
    return length;
}

std::span<const std::uint8_t> CBlockImage::CachedBlock(std::uint64_t number) {
    if (number != m_current) {
        m_room.resize(m_geometry.blockSize);
        m_length = ReadBlock(number, m_room);
        m_current = m_length > 0 ? number : kNoBlock;
    }
    return std::span(m_room).first(m_length);
}

std::size_t CBlockImage::ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) {
    std::size_t done = 0;
    while (position >= 0 && position < m_geometry.size && done < buffer.size()) {
        const auto place = static_cast<std::uint64_t>(position);
        const auto rest = buffer.subspan(done);
        const std::uint64_t number = place / m_geometry.blockSize;
        const auto offset = static_cast<std::size_t>(place % m_geometry.blockSize);
        std::size_t count = 0;
        if (offset == 0 && rest.size() >= m_geometry.blockSize && number != m_current) {
            count = ReadBlock(number, rest.first(m_geometry.blockSize));
        } else if (const std::span content = CachedBlock(number); offset < content.size()) {
            count = std::min(rest.size(), content.size() - offset);
            std::copy_n(content.begin() + static_cast<std::ptrdiff_t>(offset), count, rest.begin());
        }
        if (count == 0) {
            break;
        }
        done += count;
        position += static_cast<std::int64_t>(count);
    }
    return done;
}

}  // namespace vantrel
