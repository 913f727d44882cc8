#include "compress/dax_reader.h"

#include <algorithm>
#include <array>

#include "operation/text.h"

namespace vantrel {

EDaxFault CDaxReader::ReadHeader() {
    std::array<std::uint8_t, DaxHeader::kSize> bytes = {};
    if (m_file.ReadAt(0, bytes) != bytes.size()) {
        return Refuse(EDaxFault::Header, Format("DAX header is incomplete: the file has %lld bytes",
                                                static_cast<long long>(m_file.Size())));
    }
    m_header = DaxHeader::Decode(bytes);
    if (m_header.magic != DaxHeader::kMagic) {
        return EDaxFault::Header;
    }
    if (m_strict && m_header.version > kDaxVersionWithAreas) {
        return Refuse(EDaxFault::Unsupported, Format("DAX version %u is not supported", m_header.version));
    }
    if (m_strict && m_header.image_size == 0) {
        return Refuse(EDaxFault::Unsupported, "DAX image size 0 is not supported");
    }
    return EDaxFault::None;
}

/// Keeps the reason for a strict reader.
EDaxFault CDaxReader::Refuse(EDaxFault fault, const std::string& reason) {
    m_refusal = m_strict ? reason : std::string();
    return fault;
}

std::uint32_t CDaxReader::AreaCount() const {
    return m_strict && m_header.version == kDaxVersionWithAreas ? m_header.area_count : 0;
}

EDaxFault CDaxReader::ReadTables() {
    EDaxFault fault = ReadTable(m_positions, FrameCount());
    if (fault == EDaxFault::None) {
        fault = ReadTable(m_lengths, FrameCount());
    }
    return fault == EDaxFault::None && AreaCount() != 0 ? ReadAreas() : fault;
}

/// Reads the list of plain areas. They must lie in the image, and together name no more frames than it has, so that
/// marking them takes no longer than the image.
EDaxFault CDaxReader::ReadAreas() {
    CNumberTable<std::uint32_t> areas;
    if (AreaCount() > FrameCount()) {
        return Refuse(EDaxFault::Tables,
                      Format("DAX area count %u is not supported: the image has %u frames", AreaCount(), FrameCount()));
    }
    if (const EDaxFault fault = ReadTable(areas, 2 * AreaCount()); fault != EDaxFault::None) {
        return fault;
    }
    m_isPlain = TryAllocate(FrameCount());
    if (!m_isPlain) {
        return EDaxFault::Memory;
    }
    std::uint32_t plainFrames = 0;
    for (std::uint32_t area = 0; area < AreaCount(); ++area) {
        const std::uint32_t first = areas.Get(std::uint64_t{2} * area);
        const std::uint32_t count = areas.Get(std::uint64_t{2} * area + 1);
        if (first > FrameCount() || count > FrameCount() - first || count > FrameCount() - plainFrames) {
            return Refuse(EDaxFault::Tables,
                          Format("DAX area %u of %u frames from frame %u is not supported: the image has %u frames",
                                 area, count, first, FrameCount()));
        }
        std::fill_n(m_isPlain.get() + first, count, std::uint8_t{1});
        plainFrames += count;
    }
    return EDaxFault::None;
}

/// Reads the table of `count` numbers at the current position.
template <typename Number>
EDaxFault CDaxReader::ReadTable(CNumberTable<Number>& table, std::uint32_t count) {
    const std::uint64_t size = std::uint64_t{count} * sizeof(Number);
    const std::int64_t room = m_file.Size() - m_file.Position();
    if (room < 0 || static_cast<std::uint64_t>(room) < size) {
        return Refuse(EDaxFault::Tables,
                      Format("DAX image size %u is not supported: the tables of its frames do not fit the file",
                             m_header.image_size));
    }
    if (!table.Allocate(count)) {
        return EDaxFault::Memory;
    }
    return m_file.Read(table.Bytes()) == size ? EDaxFault::None : EDaxFault::Tables;
}

std::span<const std::uint8_t> CDaxReader::ContentOf(std::uint32_t number, const SBlock& frame) const {
    const std::size_t size = frame.content.size();
    return frame.content.first(m_strict ? std::min(size, m_header.ContentSize(number)) : size);
}

bool CDaxReader::ReadStored(std::uint64_t number, std::span<std::uint8_t> buffer, SBlock& frame) {
    const auto index = static_cast<std::uint32_t>(number);
    const std::size_t size = Length(index);
    const bool isPlain = IsPlain(index);
    frame.storedAs = isPlain ? EStoredAs::Plain : EStoredAs::Stream;
    if (size > (isPlain ? kDaxFrameSize : buffer.size()) ||
        m_file.ReadAt(Position(index), buffer.first(size)) != size) {
        return false;
    }
    frame.stored = buffer.first(size);
    return true;
}

EDaxFault CDaxReader::FaultOf(std::uint32_t number, const SBlock& frame) const {
    if (frame.isUnreadable) {
        return EDaxFault::Read;
    }
    if (!frame.outcome.HasAllOutput()) {
        return EDaxFault::Inflate;
    }
    return m_strict && frame.content.size() < m_header.ContentSize(number) ? EDaxFault::Short : EDaxFault::None;
}

}  // namespace vantrel
