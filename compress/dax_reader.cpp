#include "compress/dax_reader.h"

#include <zlib.h>

#include "files/byte_order.h"

namespace vantrel {

EDaxFault CDaxReader::ReadHeader() {
    std::array<std::uint8_t, DaxHeader::kSize> bytes = {};
    if (m_file.ReadAt(0, bytes) != bytes.size()) {
        return EDaxFault::Header;
    }
    m_header = DaxHeader::Decode(bytes);
    return m_header.magic == DaxHeader::kMagic ? EDaxFault::None : EDaxFault::Header;
}

EDaxFault CDaxReader::ReadTables() {
    const EDaxFault fault = ReadTable(kDaxPositionSize, m_positions);
    return fault == EDaxFault::None ? ReadTable(kDaxLengthSize, m_lengths) : fault;
}

/// Reads the table that begins where the last read ended.
EDaxFault CDaxReader::ReadTable(std::uint32_t entrySize, Buffer& table) {
    const std::uint64_t size = std::uint64_t{FrameCount()} * entrySize;
    const std::int64_t room = m_file.Size() - m_file.Position();
    if (room < 0 || static_cast<std::uint64_t>(room) < size) {
        return EDaxFault::Tables;
    }
    table = TryAllocate(size);
    if (!table) {
        return EDaxFault::Memory;
    }
    return m_file.Read({table.get(), static_cast<std::size_t>(size)}) == size ? EDaxFault::None : EDaxFault::Tables;
}

std::uint32_t CDaxReader::Position(std::uint32_t frame) const {
    return LoadLe32(std::span<const std::uint8_t, kDaxPositionSize>(
        m_positions.get() + std::size_t{frame} * kDaxPositionSize, kDaxPositionSize));
}

std::uint16_t CDaxReader::Length(std::uint32_t frame) const {
    return LoadLe16(std::span<const std::uint8_t, kDaxLengthSize>(m_lengths.get() + std::size_t{frame} * kDaxLengthSize,
                                                                  kDaxLengthSize));
}

EDaxFault CDaxReader::ReadFrame(std::uint32_t frame, std::span<const std::uint8_t>& content) {
    const std::size_t stored = Length(frame);
    if (stored > m_stored.size() || m_file.ReadAt(Position(frame), std::span(m_stored).first(stored)) != stored) {
        return EDaxFault::Read;
    }
    auto length = static_cast<uLongf>(m_frame.size());
    if (uncompress(m_frame.data(), &length, m_stored.data(), static_cast<uLong>(stored)) != Z_OK) {
        return EDaxFault::Inflate;
    }
    content = std::span(m_frame).first(length);
    return EDaxFault::None;
}

}  // namespace vantrel
