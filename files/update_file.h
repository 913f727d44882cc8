// A file that is changed in place. The window keeps every change; the console program undoes a change that was not
// completed.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "files/native_file.h"

namespace vantrel {

enum class EUpdateManner {
    InPlace,              ///< Every change stays.
    UndoUnlessCommitted,  ///< Overwritten bytes and the length come back unless Commit succeeded.
    ReadOnly,             ///< Opened for reading; nothing may be written.
};

class CUpdateFile : public CByteSource {
public:
    CUpdateFile() = default;
    CUpdateFile(const CUpdateFile&) = delete;
    CUpdateFile& operator=(const CUpdateFile&) = delete;
    ~CUpdateFile() override;

    /// Opens an existing file. False, with LastFileError() set, when that fails.
    bool Open(const std::string& path, EUpdateManner manner);
    /// Opens the same file once more, at position 0. In place it is really closed and opened; otherwise the change goes
    /// on. False, with LastFileError() set, when that fails.
    bool Reopen();

    /// Length in bytes, −1 when it cannot be told.
    std::int64_t Size() const override;
    /// Moves to a byte position. False for a negative one and after an error.
    bool Seek(std::int64_t position);
    /// Reads at a position and moves on; the number of bytes read is smaller than the buffer only at the end of the
    /// file or after an error.
    std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) override;
    /// Writes at the current position and moves on. False when not everything could be written or what would be
    /// overwritten could not be kept; the cause is in Problem().
    bool Write(std::span<const std::uint8_t> bytes);

    /// Closes the file and keeps the change. False when anything failed since Open; then the change is undone, unless
    /// it was made in place.
    bool Commit();

    /// Whether the system has reported an error while reading or measuring since Open. The end of the file is no error.
    bool HasFailedReading() const { return !m_readProblem.empty(); }
    /// The first error of reading, and of seeking, writing or committing, as a text that names the file and the cause.
    const std::string& ReadProblem() const { return m_readProblem; }
    const std::string& Problem() const { return m_writeProblem; }
    const std::string& Path() const { return m_path; }

private:
    struct SOverwritten {
        std::int64_t position;
        std::vector<std::uint8_t> bytes;
    };

    bool Keep(std::size_t count);
    void Undo();
    void CloseForGood();
    bool MoveTo(std::int64_t position);
    bool NoteWriteFailure();
    void NoteReadFailure() const;

    CNativeFile m_file;
    EUpdateManner m_manner = EUpdateManner::InPlace;
    std::string m_path;
    std::string m_writeProblem;
    mutable std::string m_readProblem;
    std::int64_t m_position = 0;
    std::int64_t m_oldSize = 0;
    bool m_changed = false;
    std::vector<SOverwritten> m_overwritten;
};

}  // namespace vantrel
