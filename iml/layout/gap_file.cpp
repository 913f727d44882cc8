#include "iml/layout/gap_file.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "files/byte_order.h"
#include "iso/iso9660.h"

namespace vantrel {

namespace {

constexpr std::string_view kMagic = "IMLGAPS3";
/// The start of earlier versions; the last character is the number.
constexpr std::string_view kAnyMagic = "IMLGAPS";
constexpr std::size_t kLengthOffset = 8;
constexpr std::size_t kCountOffset = 16;
constexpr std::size_t kCrcOffset = 20;
constexpr std::size_t kLayoutLengthOffset = 24;
constexpr std::size_t kLayoutCrcOffset = 32;
constexpr std::size_t kFileCountOffset = 36;
constexpr std::size_t kLeadingLengthOffset = 40;
constexpr std::size_t kLeadingCrcOffset = 48;
constexpr std::size_t kHeaderSize = 56;
constexpr std::size_t kIndexEntrySize = 16;  ///< of an area and of a file

/// Bytes copied at a time.
constexpr std::int64_t kPieceSize = 1 << 20;

using Header = std::array<std::uint8_t, kHeaderSize>;
using IndexEntry = std::array<std::uint8_t, kIndexEntrySize>;

void Store32(std::span<std::uint8_t> bytes, std::uint32_t value) {
    const auto stored = Le32(value);
    std::copy(stored.begin(), stored.end(), bytes.begin());
}

void Store64(std::span<std::uint8_t> bytes, std::int64_t value) {
    const auto low = Le32(static_cast<std::uint32_t>(value));
    const auto high = Le32(static_cast<std::uint32_t>(value >> 32));
    std::copy(low.begin(), low.end(), bytes.begin());
    std::copy(high.begin(), high.end(), bytes.begin() + 4);
}

std::int64_t Load64(std::span<const std::uint8_t, 8> bytes) {
    return static_cast<std::int64_t>(LoadLe64(bytes));
}

auto KeyOf(const SExportedFile& file) {
    return std::pair(file.sector, file.sum.length);
}

bool IsBefore(const SExportedFile& a, const SExportedFile& b) {
    return KeyOf(a) < KeyOf(b);
}

/// With content, in order, each once.
void Normalize(std::vector<SExportedFile>& files) {
    std::erase_if(files, [](const SExportedFile& file) { return file.sum.length == 0; });
    std::sort(files.begin(), files.end(), IsBefore);
    files.erase(std::unique(files.begin(), files.end(),
                            [](const SExportedFile& a, const SExportedFile& b) { return KeyOf(a) == KeyOf(b); }),
                files.end());
}

bool CopyArea(CByteSource& image, const SImageArea& area, COutputFile& output) {
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(std::min(area.length, kPieceSize)));
    for (std::int64_t done = 0; done < area.length; done += kPieceSize) {
        const auto piece = std::span(bytes).first(static_cast<std::size_t>(std::min(area.length - done, kPieceSize)));
        if (output.Copy(image, area.position + done, piece) != piece.size()) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::vector<SImageArea> UncoveredAreas(std::span<const SImageArea> covered, std::int64_t imageLength) {
    std::vector<SImageArea> areas;
    std::int64_t position = 0;
    for (const SImageArea& area : covered) {
        const std::int64_t start = std::min(area.position, imageLength);
        if (start > position) {
            areas.push_back({position, start - position});
        }
        position = std::max(position, std::min(area.position + area.length, imageLength));
    }
    if (position < imageLength) {
        areas.push_back({position, imageLength - position});
    }
    return areas;
}

std::vector<SImageArea> AreasWithData(CByteSource& image, std::span<const SImageArea> areas) {
    std::vector<SImageArea> found;
    std::array<std::uint8_t, kSectorSize> bytes = {};
    for (const SImageArea& area : areas) {
        const std::int64_t end = area.position + area.length;
        std::int64_t position = area.position;
        while (position < end) {
            const std::int64_t next = std::min(end, (position / kSectorSize + 1) * kSectorSize);
            const auto piece = std::span(bytes).first(static_cast<std::size_t>(next - position));
            const std::size_t count = image.ReadAt(position, piece);
            const bool hasData = std::any_of(piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(count),
                                             [](std::uint8_t byte) { return byte != 0; });
            if (hasData && !found.empty() && found.back().position + found.back().length == position) {
                found.back().length += next - position;
            } else if (hasData) {
                found.push_back({position, next - position});
            }
            position = next;
        }
    }
    return found;
}

bool WriteGapFile(CByteSource& image, const SGapOrigin& origin, std::span<const SImageArea> areas,
                  std::vector<SExportedFile> files, COutputFile& output) {
    Normalize(files);
    Header header = {};
    std::copy(kMagic.begin(), kMagic.end(), header.begin());
    const std::span fields(header);
    Store64(fields.subspan(kLengthOffset), origin.image.length);
    Store32(fields.subspan(kCountOffset), static_cast<std::uint32_t>(areas.size()));
    Store32(fields.subspan(kCrcOffset), origin.image.crc32);
    Store64(fields.subspan(kLayoutLengthOffset), origin.layout.length);
    Store32(fields.subspan(kLayoutCrcOffset), origin.layout.crc32);
    Store32(fields.subspan(kFileCountOffset), static_cast<std::uint32_t>(files.size()));
    Store64(fields.subspan(kLeadingLengthOffset), origin.leading.length);
    Store32(fields.subspan(kLeadingCrcOffset), origin.leading.crc32);
    output.Write(header);
    for (const SImageArea& area : areas) {
        IndexEntry entry = {};
        Store64(entry, area.position);
        Store64(std::span(entry).subspan(8), area.length);
        output.Write(entry);
    }
    for (const SExportedFile& file : files) {
        IndexEntry entry = {};
        Store32(entry, file.sector);
        Store32(std::span(entry).subspan(4), file.sum.crc32);
        Store64(std::span(entry).subspan(8), file.sum.length);
        output.Write(entry);
    }
    return std::all_of(areas.begin(), areas.end(),
                       [&](const SImageArea& area) { return CopyArea(image, area, output); });
}

bool CGapFileReader::Refuse(const std::string& path, const char* reason) {
    m_problem = path + ": " + reason;
    m_file.Close();
    return false;
}

bool CGapFileReader::Open(const std::string& path) {
    m_areas.clear();
    m_files.clear();
    m_dataPositions.clear();
    m_problem.clear();
    if (!m_file.Open(path)) {
        m_problem = path + ": " + LastFileError();
        return false;
    }
    Header header = {};
    const std::size_t count = m_file.Read(header);
    if (!std::equal(kAnyMagic.begin(), kAnyMagic.end(), header.begin())) {
        return Refuse(path, "not a gap file");
    }
    if (header[kAnyMagic.size()] < kMagic.back()) {
        return Refuse(path, "a gap file of an earlier version, without all checksums; export the image again");
    }
    if (count != header.size() || !std::equal(kMagic.begin(), kMagic.end(), header.begin())) {
        return Refuse(path, "not a gap file");
    }
    const std::span fields(header);
    m_origin.image = {Load64(fields.subspan<kLengthOffset, 8>()), LoadLe32(fields.subspan<kCrcOffset, 4>())};
    m_origin.layout = {Load64(fields.subspan<kLayoutLengthOffset, 8>()),
                       LoadLe32(fields.subspan<kLayoutCrcOffset, 4>())};
    m_origin.leading = {Load64(fields.subspan<kLeadingLengthOffset, 8>()),
                        LoadLe32(fields.subspan<kLeadingCrcOffset, 4>())};
    if (m_origin.image.length < 0 ||
        !ReadIndex(LoadLe32(fields.subspan<kCountOffset, 4>()), LoadLe32(fields.subspan<kFileCountOffset, 4>()))) {
        return Refuse(path, "damaged gap file");
    }
    return true;
}

bool CGapFileReader::ReadIndex(std::uint32_t areas, std::uint32_t files) {
    const std::int64_t size = m_file.Size();
    const std::uint64_t entries = std::uint64_t{areas} + files;
    auto dataPosition = static_cast<std::int64_t>(kHeaderSize + kIndexEntrySize * entries);
    if (dataPosition > size) {
        return false;
    }
    std::int64_t lastEnd = 0;
    for (std::uint32_t i = 0; i < areas; ++i) {
        IndexEntry entry = {};
        if (m_file.Read(entry) != entry.size()) {
            return false;
        }
        const std::int64_t position = Load64(std::span(entry).first<8>());
        const std::int64_t length = Load64(std::span(entry).last<8>());
        if (position < lastEnd || length <= 0 || position > m_origin.image.length ||
            length > m_origin.image.length - position || length > size - dataPosition) {
            return false;
        }
        m_areas.push_back({position, length});
        m_dataPositions.push_back(dataPosition);
        lastEnd = position + length;
        dataPosition += length;
    }
    return dataPosition == size && ReadFiles(files);
}

bool CGapFileReader::ReadFiles(std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; ++i) {
        IndexEntry entry = {};
        if (m_file.Read(entry) != entry.size()) {
            return false;
        }
        const std::span fields(entry);
        const SExportedFile file = {LoadLe32(fields.first<4>()),
                                    {Load64(fields.last<8>()), LoadLe32(fields.subspan<4, 4>())}};
        if (file.sum.length <= 0 || (!m_files.empty() && !IsBefore(m_files.back(), file))) {
            return false;
        }
        m_files.push_back(file);
    }
    return true;
}

const SExportedFile* CGapFileReader::FindFile(std::uint32_t sector, std::int64_t length) const {
    const SExportedFile wanted = {sector, {length, 0}};
    const auto found = std::lower_bound(m_files.begin(), m_files.end(), wanted, IsBefore);
    return found != m_files.end() && !IsBefore(wanted, *found) ? &*found : nullptr;
}

std::size_t CGapFileReader::ReadAt(std::size_t index, std::int64_t offset, std::span<std::uint8_t> buffer) {
    const std::int64_t rest = m_areas[index].length - offset;
    if (rest <= 0) {
        return 0;
    }
    const auto count = static_cast<std::size_t>(std::min<std::int64_t>(rest, static_cast<std::int64_t>(buffer.size())));
    return m_file.ReadAt(m_dataPositions[index] + offset, buffer.first(count));
}

}  // namespace vantrel
