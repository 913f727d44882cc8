// The records of directories (ECMA-119 6.8, 9.1). Every length is checked against the sector that holds the record.
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

/// One record of a directory.
struct SDirectoryEntry {
    SDirectoryRecord record;
    std::string_view name;  ///< as recorded, with version; valid during the call
};

class CDirectoryReader {
public:
    explicit CDirectoryReader(CByteSource& image);

    /// Whether the image has at least the first byte of the sector.
    bool HasSector(std::uint32_t sector) const { return sector < m_imageSectors; }

    /// Sectors of the directory at `extent`, by the length in its own first record, limited to the image.
    std::uint32_t SectorsOf(std::uint32_t extent);

    /// Whether the image holds the whole directory at `extent`.
    bool HasDirectory(std::uint32_t extent);

    /// Calls `visit` for every record of every sector of the directory, and `afterRead` after each record and sector.
    /// Skips sectors that were visited before, also for another directory, so that cycles end.
    void Visit(std::uint32_t extent, const std::function<void(const SDirectoryEntry&)>& visit,
               const std::function<void()>& afterRead);

private:
    using Sector = std::array<std::uint8_t, kSectorSize>;

    /// Bytes of the directory at `extent`, which lies in the image, by its own first record.
    std::int64_t LengthOf(std::uint32_t extent);
    static void VisitSector(const Sector& bytes, const std::function<void(const SDirectoryEntry&)>& visit,
                            const std::function<void()>& afterRead);

    CByteSource& m_image;
    std::uint32_t m_imageSectors;
    std::vector<bool> m_visited;
};

}  // namespace vantrel
