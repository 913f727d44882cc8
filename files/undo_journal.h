// The journal of a change in place: what restores the file if the change is interrupted by a failure, a kill or a power
// cut. It is a file beside the changed one, ".NAME.vantrel-undo", which exists only while a change is incomplete.
//
// The first part is the old length of the file. Each further part is a changed run of sectors: its position, the length
// and the checksums of its new content, by which Restore recognises a file that has since been replaced, and its old
// bytes. The length of a part stands before it, its CRC-32 behind it. What a power cut destroyed of the journal's end
// was not yet changed in the file.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "files/native_file.h"

namespace vantrel {

/// A disk writes a sector whole or not at all.
inline constexpr std::size_t kDiskSector = 512;

class CUndoJournal {
public:
    /// For changes of the file at `path`, which is no link. Does not access the disk.
    explicit CUndoJournal(const std::string& path);

    /// Whether a change was interrupted.
    bool Exists() const;
    /// Whether Create has made the journal, and Remove has not removed it.
    bool IsBegun() const { return m_isBegun; }
    /// Creates the journal of a file with this length in bytes. The calls that return false leave their cause in
    /// LastFileError().
    bool Create(std::int64_t length);
    /// Adds a change at a position that is a multiple of kDiskSector: `older` is what the file holds there, shorter
    /// than `newer` at its end.
    bool Add(std::int64_t position, std::span<const std::uint8_t> older, std::span<const std::uint8_t> newer);
    /// Writes everything added to the disk, so that the file may be changed.
    bool Flush();

    /// Undoes the changes in `file` and writes it to the disk.
    bool Undo(CNativeFile& file);
    /// The same for the journal of an interrupted process. Throws CRefused, before any change, if the journal does not
    /// belong to the file.
    bool Restore(CNativeFile& file);
    /// Removes the journal: the change is complete, or undone.
    bool Remove();

private:
    struct SChange {
        std::int64_t position = 0;
        std::vector<std::uint8_t> older;
        std::size_t newLength = 0;
        std::uint32_t oldPartSum = 0;        ///< of the new content's last sector up to the old length
        std::vector<std::uint32_t> newSums;  ///< CRC-32 of each new sector
    };

    bool OpenToRead();
    bool MoveTo(std::int64_t position);
    bool WritePart(std::span<const std::uint8_t> part);
    bool ReadPart(std::vector<std::uint8_t>& part);
    bool ReadChange(SChange& change);
    std::vector<std::int64_t> FindChanges();
    bool Belongs(CNativeFile& file, std::int64_t length, const std::vector<std::int64_t>& changes);
    std::int64_t ReadLength();

    std::string m_path;
    std::string m_journalPath;
    CNativeFile m_file;
    bool m_isBegun = false;
    bool m_isNameFlushed = false;
    bool m_hasFailed = false;  ///< Whether reading has failed, so that not all changes may be known.
};

}  // namespace vantrel
