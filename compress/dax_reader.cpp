#include "compress/dax_reader.h"

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
    if (fault != EDaxFault::None) {
        return fault;
    }
    return m_frame.Allocate(kDaxFrameSizes, 1) ? ReadTable(kDaxLengthSize, m_lengths) : EDaxFault::Memory;
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
    m_frame.Read(*this, frame, 1);
    m_frame.Make(m_inflater);
    content = m_frame.Blocks().front().content;
    return FaultOf(m_frame.Blocks().front());
}

bool CDaxReader::ReadStored(std::uint64_t frame, std::span<std::uint8_t> room, std::size_t& size, bool& plain) {
    const auto number = static_cast<std::uint32_t>(frame);
    plain = false;
    size = Length(number);
    return size <= room.size() && m_file.ReadAt(Position(number), room.first(size)) == size;
}

/// A stream whose end alone displeases zlib is whole.
EDaxFault CDaxReader::FaultOf(const SInflatedBlock& frame) {
    if (!frame.wasRead) {
        return EDaxFault::Read;
    }
    const bool whole = !frame.outcome.failed || frame.outcome.FailedIn(EStreamStep::End);
    return whole ? EDaxFault::None : EDaxFault::Inflate;
}

}  // namespace vantrel
