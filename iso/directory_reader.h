// The records of directories (ECMA-119 6.8, 9.1), with every length checked against the sector that holds it.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "files/byte_source.h"
#include "iso/iso9660.h"

namespace vantrel {

/// One record as it stands in its sector.
struct SDirectoryEntry {
    SDirectoryRecord record;
    std::string_view name;  ///< as recorded, version included; valid during the call that hands it out
};

class CDirectoryReader {
public:
    explicit CDirectoryReader(CByteSource& image);

    /// Whether the sector lies in the image, at least with its first byte.
    bool HasSector(std::uint32_t sector) const { return sector < m_imageSectors; }
    std::uint32_t ImageSectors() const { return m_imageSectors; }

    /// Sectors of the directory that begins at `extent`, by the length in its own first record; none beyond the image.
    std::uint32_t SectorsOf(std::uint32_t extent);

    /// Whether the whole directory that begins at `extent` lies in the image.
    bool HasDirectory(std::uint32_t extent);

    /// Calls `visit` for every record of every sector of the directory, and `afterRead` after each record and sector. A
    /// sector that was visited before, as part of whatever directory, is passed over: so circles end.
    void Visit(std::uint32_t extent, const std::function<void(const SDirectoryEntry&)>& visit,
               const std::function<void()>& afterRead);

private:
    using Sector = std::array<std::uint8_t, kSectorSize>;

    /// Bytes of a directory that begins in the image, as its own first record has them.
    std::int64_t LengthOf(std::uint32_t extent);
    static void VisitSector(const Sector& bytes, const std::function<void(const SDirectoryEntry&)>& visit,
                            const std::function<void()>& afterRead);

    CByteSource& m_image;
    std::uint32_t m_imageSectors;
    std::vector<bool> m_visited;
};

}  // namespace vantrel
