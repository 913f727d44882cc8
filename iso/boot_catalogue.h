// The boot catalogue of an image ("El Torito" Bootable CD-ROM Format 1.0): which sectors a computer loads to boot from
// it. Its entries name sectors, not files, so an edit that moves a file must know them.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "files/byte_source.h"
#include "iso/patch.h"

namespace vantrel {

/// Unit of the lengths in a boot catalogue.
inline constexpr std::int64_t kBootSectorSize = 512;

struct SBootEntry {
    std::int64_t position = 0;  ///< of the entry in the image, in bytes
    std::uint32_t sector = 0;   ///< where the boot image begins
    std::uint16_t count = 0;    ///< what is loaded of it, in units of 512 bytes

    std::int64_t Size() const { return count * kBootSectorSize; }
};

struct SBootCatalogue {
    std::uint32_t record = 0;         ///< sector of the boot record (ECMA-119 8.2) that names the catalogue
    std::uint32_t sector = 0;         ///< where the catalogue begins
    bool isValid = false;             ///< whether the image has a catalogue there
    std::vector<SBootEntry> entries;  ///< those that name a sector
};

/// The catalogue that the first boot record of the El Torito format names; nullopt if there is no such record.
std::optional<SBootCatalogue> ReadBootCatalogue(CByteSource& image);

/// The change that makes an entry name another sector and another length.
SSectorPatch BootEntryPatch(const SBootEntry& entry, std::uint32_t sector, std::uint16_t count);

}  // namespace vantrel
