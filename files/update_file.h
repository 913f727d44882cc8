// A file that is changed in place. The window keeps every change; the console program undoes an incomplete change, even
// one that a kill or a power cut interrupted: a journal beside the file says how; see undo_journal.h.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "files/native_file.h"
#include "files/undo_journal.h"

namespace vantrel {

enum class EUpdateManner {
    InPlace,              ///< Every change stays.
    UndoUnlessCommitted,  ///< Content and length are restored unless Commit succeeds. One process at a time.
    ReadOnly,             ///< Opened for reading; writing fails.
};

class CUpdateFile : public CByteSource {
public:
    CUpdateFile() = default;
    CUpdateFile(const CUpdateFile&) = delete;
    CUpdateFile& operator=(const CUpdateFile&) = delete;
    ~CUpdateFile() override;

    /// Opens an existing file, and undoes an interrupted change first unless the file is changed in place. On failure,
    /// returns false with LastFileError() set. Throws CRefused if the change cannot be undone, or must not: to read
    /// only.
    bool Open(const std::string& path, EUpdateManner manner);
    /// Whether Open has undone an interrupted change.
    bool WasRestored() const { return m_wasRestored; }
    /// Continues at position 0. In place, closes the file and opens it again. On failure, returns false with
    /// LastFileError() set.
    bool Reopen();

    /// Length in bytes, −1 if unknown.
    std::int64_t Size() const override;
    /// Moves to a byte position. Returns false for a negative position and after an error.
    bool Seek(std::int64_t position);
    /// Reads at a position and advances it. Returns the number of bytes read: fewer than the buffer holds only at the
    /// end of the file or after an error.
    std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) override;
    /// Writes at the current position and advances it. Returns false if not everything could be written, or if the
    /// journal could not; Problem() then has the cause. What can be undone is collected and written in large pieces.
    bool Write(std::span<const std::uint8_t> bytes);

    /// Closes the file and keeps the change. Returns false if a seek, a write or closing has failed since Open; the
    /// change is then undone unless it was made in place.
    bool Commit();

    /// Whether reading or measuring has failed since Open. The end of the file is not an error.
    bool HasFailedReading() const { return !m_readProblem.empty(); }
    /// The first such error as a text with the path and the cause; empty if there was none.
    const std::string& ReadProblem() const override { return m_readProblem; }
    /// The same for seeking, writing and committing.
    const std::string& Problem() const { return m_writeProblem; }
    const std::string& Path() const { return m_path; }

private:
    /// The new content of sectors that are not yet written, by number.
    using Sectors = std::map<std::int64_t, std::vector<std::uint8_t>>;

    bool CanUndo() const { return m_manner == EUpdateManner::UndoUnlessCommitted; }
    bool OpenRestored();
    bool Collect(std::span<const std::uint8_t> bytes);
    bool Load(std::int64_t sector, std::vector<std::uint8_t>& content);
    bool Apply();
    bool ApplyAll();
    bool AddToJournal(std::int64_t position, std::span<const std::uint8_t> content);
    void Undo();
    bool CommitChange();
    bool MoveTo(std::int64_t position);
    bool NoteWriteFailure();
    void NoteReadFailure() const;

    CNativeFile m_file;
    EUpdateManner m_manner = EUpdateManner::InPlace;
    std::string m_path;
    std::string m_writeProblem;
    mutable std::string m_readProblem;
    std::int64_t m_position = 0;
    std::int64_t m_size = 0;  ///< With the collected sectors.
    std::int64_t m_oldSize = 0;
    bool m_wasRestored = false;
    Sectors m_collected;
    std::optional<CUndoJournal> m_journal;
};

}  // namespace vantrel
