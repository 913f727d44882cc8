#include "iso/directory_reader.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <span>

namespace vantrel {

namespace {

std::uint32_t SectorsInFile(const CByteSource& image) {
    const std::int64_t sectors = SectorsFor(std::max<std::int64_t>(image.Size(), 0));
    return static_cast<std::uint32_t>(std::min<std::int64_t>(sectors, std::numeric_limits<std::uint32_t>::max()));
}

SDirectoryRecord RecordAt(std::span<const std::uint8_t> bytes) {
    std::array<std::uint8_t, sizeof(SDirectoryRecord)> record = {};
    std::copy_n(bytes.begin(), record.size(), record.begin());
    return std::bit_cast<SDirectoryRecord>(record);
}

}  // namespace

CDirectoryReader::CDirectoryReader(CByteSource& image)
    : m_image(image), m_imageSectors(SectorsInFile(image)), m_visited(m_imageSectors) {}

std::int64_t CDirectoryReader::LengthOf(std::uint32_t extent) {
    std::array<std::uint8_t, sizeof(SDirectoryRecord)> bytes = {};
    m_image.ReadAt(extent * kSectorSize, bytes);
    return RecordAt(bytes).dataLength.Value();
}

std::uint32_t CDirectoryReader::SectorsOf(std::uint32_t extent) {
    if (!HasSector(extent)) {
        return 0;
    }
    return static_cast<std::uint32_t>(std::min<std::int64_t>(SectorsFor(LengthOf(extent)), m_imageSectors - extent));
}

bool CDirectoryReader::HasDirectory(std::uint32_t extent) {
    return HasSector(extent) && extent * kSectorSize + LengthOf(extent) <= m_image.Size();
}

void CDirectoryReader::Visit(std::uint32_t extent, const std::function<void(const SDirectoryEntry&)>& visit,
                             const std::function<void()>& afterRead) {
    const std::uint32_t sectors = SectorsOf(extent);
    for (std::uint32_t sector = extent; sector < extent + sectors; ++sector) {
        if (m_visited[sector]) {
            continue;
        }
        m_visited[sector] = true;
        Sector bytes = {};
        m_image.ReadAt(sector * kSectorSize, bytes);
        afterRead();
        VisitSector(bytes, visit, afterRead);
    }
}

void CDirectoryReader::VisitSector(const Sector& bytes, const std::function<void(const SDirectoryEntry&)>& visit,
                                   const std::function<void()>& afterRead) {
    std::size_t offset = 0;
    while (offset < kDirectoryRecordLimit && bytes[offset] != 0) {
        const SDirectoryRecord record = RecordAt(std::span(bytes).subspan(offset));
        const std::size_t nameEnd = sizeof(SDirectoryRecord) + record.nameLength;
        if (record.length > bytes.size() - offset || record.length < nameEnd) {
            return;  // the position of the next record is unknown
        }
        const auto* name = reinterpret_cast<const char*>(&bytes[offset]) + sizeof(SDirectoryRecord);
        visit({record, {name, record.nameLength}});
        afterRead();
        offset += record.length;
    }
}

}  // namespace vantrel
