#include "compress/dax_reader.h"

#include <array>

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
    const EDaxFault fault = ReadTable(m_positions);
    if (fault != EDaxFault::None) {
        return fault;
    }
    return m_slot.Allocate(kDaxFrameSizes, 1) ? ReadTable(m_lengths) : EDaxFault::Memory;
}

/// Reads the table at the current position.
template <typename Number>
EDaxFault CDaxReader::ReadTable(CNumberTable<Number>& table) {
    const std::uint64_t size = std::uint64_t{FrameCount()} * sizeof(Number);
    const std::int64_t room = m_file.Size() - m_file.Position();
    if (room < 0 || static_cast<std::uint64_t>(room) < size) {
        return EDaxFault::Tables;
    }
    if (!table.Allocate(FrameCount())) {
        return EDaxFault::Memory;
    }
    return m_file.Read(table.Bytes()) == size ? EDaxFault::None : EDaxFault::Tables;
}

EDaxFault CDaxReader::ReadFrame(std::uint32_t frame, std::span<const std::uint8_t>& content) {
    m_slot.ReadContainer(*this, frame, 1);
    m_slot.Inflate(m_stream);
    content = m_slot.Blocks().front().content;
    return FaultOf(m_slot.Blocks().front());
}

bool CDaxReader::ReadStored(std::uint64_t number, std::span<std::uint8_t> buffer, SBlock& frame) {
    const auto index = static_cast<std::uint32_t>(number);
    const std::size_t size = Length(index);
    if (size > buffer.size() || m_file.ReadAt(Position(index), buffer.first(size)) != size) {
        return false;
    }
    frame.stored = buffer.first(size);
    return true;
}

EDaxFault CDaxReader::FaultOf(const SBlock& frame) {
    if (frame.isUnreadable) {
        return EDaxFault::Read;
    }
    return frame.outcome.HasAllOutput() ? EDaxFault::None : EDaxFault::Inflate;
}

}  // namespace vantrel
