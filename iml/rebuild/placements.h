// The files that a rebuild places, in the order of the layout. The window keeps the list in two files as well, which
// are written only, never read back as data; but it reports a file that cannot be reopened.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "files/checked_file.h"
#include "iml/layout/layout_reader.h"
#include "iml/rebuild/rebuild.h"
#include "operation/operation.h"

namespace vantrel {

/// A file to place.
struct SPlacement {
    std::uint32_t first = 0;  ///< sectors, both inclusive
    std::uint32_t last = 0;
    std::string path;  ///< as in the layout
};

class CPlacements {
public:
    CPlacements(const SRebuildRequest& request, COperation& operation);

    /// Creates the window's files; codes 202 and 2021.
    void CreateFiles();
    /// Sets the sector behind the leading structures, where a list without files ends.
    void StartBehind(std::uint32_t sector) { m_behindLast = sector; }
    void Append(const SListedFile& file);
    /// Completes the window's files.
    void FinishFiles();
    /// Reopens the window's files; codes 206 and 2022.
    void ReopenFiles();
    /// Deletes the window's files.
    void RemoveFiles();

    const std::vector<SPlacement>& Files() const { return m_files; }
    /// Sectors between file `index` and the next one; negative if they overlap, 0 behind the last file.
    std::int64_t GapBehind(std::size_t index) const;
    /// First sector of the first file; without files, the sector behind the leading structures.
    std::uint32_t FirstSector() const;
    /// First sector behind the last file, or else behind the leading structures.
    std::uint32_t SectorBehindLast() const { return m_behindLast; }

private:
    void WriteBound(std::uint32_t sector);

    const std::optional<SPlacementFilePaths>& m_paths;
    COperation& m_operation;
    CCheckedOutput m_entryList;
    CCheckedOutput m_bounds;
    std::vector<SPlacement> m_files;
    std::uint32_t m_behindLast = 1;
};

}  // namespace vantrel
