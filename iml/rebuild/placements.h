// What a rebuild knows of the files to place between its two passes: the entry list (text, a line a file) and the
// bounds table (32-bit little-endian sector numbers). For the rebuilds only.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "iml/layout/layout_reader.h"
#include "iml/side_file.h"
#include "iml/layout/text_reader.h"

namespace vantrel {

class CSideLists {
public:
    CSideLists(const std::string& entryListPath, const std::string& boundsPath, ESidePlace place)
        : m_entryList(entryListPath, place), m_bounds(boundsPath, place) {}

    CSideFile& EntryList() { return m_entryList; }
    CSideFile& Bounds() { return m_bounds; }

    /// The sector behind the leading structures, which a list without files ends with.
    void BeginBehind(std::uint32_t sector) { m_behindLast = sector; }
    /// Puts a file behind the others: "first|last|path" in the entry list, first and last in the bounds table. False
    /// when that could not be written.
    bool Append(const SListedFile& file);
    /// Ends the bounds table with the two sectors behind the last file, and the writing of both lists. False when
    /// something could not be written.
    bool EndWriting();

    /// First sector of the first file; without files, the sector behind the leading structures.
    std::uint32_t FirstSector() { return BoundAt(0); }
    /// The first sector behind the last file, or else behind the leading structures.
    std::uint32_t SectorBehindLast();

    /// One file as the second pass sees it.
    struct SPlacedFile {
        std::uint32_t first = 0;  ///< From the entry list.
        std::uint32_t last = 0;   ///< From the bounds table.
        std::int64_t gap = 0;     ///< Sectors up to the next file's first one; negative when they overlap.
        std::string path;
    };
    /// The next file of the lists; nothing behind the last one and at an empty path.
    std::optional<SPlacedFile> Next(CLineBuffer& line);

    /// Why Append or EndWriting returned false.
    const std::string& FailureText() const;

    void EndReading();
    /// Whether the system ever reported an error while reading the lists.
    bool HasFailedReading() const { return m_entryList.HasFailedReading() || m_bounds.HasFailedReading(); }
    /// Deletes both lists.
    void Remove();

private:
    bool AppendBound(std::uint32_t sector);
    std::uint32_t BoundAt(std::int64_t position);

    CSideFile m_entryList;
    CSideFile m_bounds;
    std::optional<CTextReader> m_lines;
    std::uint32_t m_behindLast = 1;
    std::int64_t m_nextPair = 4;
};

}  // namespace vantrel
