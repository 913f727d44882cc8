#include "iso/boot_catalogue.h"

#include <algorithm>
#include <array>
#include <bit>
#include <span>
#include <string_view>

#include "files/byte_order.h"
#include "iso/iso9660.h"
#include "iso/volume.h"

namespace vantrel {

namespace {

constexpr std::uint8_t kBootRecord = 0;
constexpr std::size_t kBootSystem = 7;
constexpr std::string_view kElTorito = "EL TORITO SPECIFICATION";
constexpr std::size_t kCatalogueSector = 71;

/// A catalogue is read up to this length, which is 512 entries.
constexpr std::size_t kMostBytes = 8 * kSectorSize;
constexpr std::size_t kEntrySize = 32;

// First bytes of entries.
constexpr std::uint8_t kValidation = 1;
constexpr std::uint8_t kSectionHeader = 0x90;
constexpr std::uint8_t kLastSectionHeader = 0x91;
/// In the second byte of an entry: an extension of it follows.
constexpr std::uint8_t kContinued = 0x20;

// Of an entry: count and sector, which follow each other. Of a section header: the number of its entries.
constexpr std::size_t kCount = 6;
constexpr std::size_t kSector = 8;
constexpr std::size_t kNumberOfEntries = 2;

using Entry = std::span<const std::uint8_t, kEntrySize>;

bool IsValidation(Entry entry) {
    return entry[0] == kValidation && entry[30] == 0x55 && entry[31] == 0xAA;
}

class CCatalogueReader {
public:
    CCatalogueReader(CByteSource& image, SBootCatalogue& catalogue)
        : m_catalogue(catalogue), m_start(catalogue.sector * kSectorSize), m_bytes(kMostBytes) {
        m_bytes.resize(image.ReadAt(m_start, m_bytes));
    }

    void Read() {
        if (!HasNext() || !IsValidation(Next())) {
            return;
        }
        m_catalogue.isValid = true;
        if (HasNext()) {
            AddEntry();  // the default one
        }
        for (bool more = true; more && HasNext();) {
            more = ReadSection();
        }
    }

private:
    bool HasNext() const { return m_bytes.size() - m_offset >= kEntrySize; }

    Entry Next() {
        const auto entry = std::span<const std::uint8_t>(m_bytes).subspan(m_offset).first<kEntrySize>();
        m_offset += kEntrySize;
        return entry;
    }

    Entry AddEntry() {
        const std::int64_t position = m_start + static_cast<std::int64_t>(m_offset);
        const Entry entry = Next();
        const std::uint32_t sector = LoadLe32(entry.subspan<kSector, 4>());
        if (sector != 0) {
            m_catalogue.entries.push_back({position, sector, LoadLe16(entry.subspan<kCount, 2>())});
        }
        return entry;
    }

    /// Reads a section with the extensions of its entries. Returns false if none follows.
    bool ReadSection() {
        const Entry header = Next();
        if (header[0] != kSectionHeader && header[0] != kLastSectionHeader) {
            return false;
        }
        for (unsigned left = LoadLe16(header.subspan<kNumberOfEntries, 2>()); left > 0 && HasNext(); --left) {
            std::uint8_t flags = AddEntry()[1];
            while ((flags & kContinued) != 0 && HasNext()) {
                flags = Next()[1];
            }
        }
        return header[0] == kSectionHeader;
    }

    SBootCatalogue& m_catalogue;
    const std::int64_t m_start;
    std::vector<std::uint8_t> m_bytes;
    std::size_t m_offset = 0;
};

}  // namespace

std::optional<SBootCatalogue> ReadBootCatalogue(CByteSource& image) {
    for (const SVolumeDescriptorAt& volume : ReadVolumeDescriptors(image)) {
        const auto bytes = std::bit_cast<std::array<std::uint8_t, sizeof(volume.descriptor)>>(volume.descriptor);
        if (volume.descriptor.type == kBootRecord &&
            std::equal(kElTorito.begin(), kElTorito.end(), &bytes[kBootSystem])) {
            SBootCatalogue catalogue;
            catalogue.record = volume.sector;
            catalogue.sector = LoadLe32(std::span(bytes).subspan<kCatalogueSector, 4>());
            CCatalogueReader(image, catalogue).Read();
            return catalogue;
        }
    }
    return std::nullopt;
}

SSectorPatch BootEntryPatch(const SBootEntry& entry, std::uint32_t sector, std::uint16_t count) {
    static_assert(kSector == kCount + sizeof(count));
    const std::array<std::uint8_t, 2> length = Le16(count);
    const std::array<std::uint8_t, 4> place = Le32(sector);
    return {entry.position + static_cast<std::int64_t>(kCount),
            {length[0], length[1], place[0], place[1], place[2], place[3]}};
}

}  // namespace vantrel
