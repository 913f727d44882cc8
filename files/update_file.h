// A file that is changed in place. The window keeps every change; the console program undoes an incomplete change.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "files/native_file.h"
#include "files/output_file.h"

namespace vantrel {

enum class EUpdateManner {
    InPlace,              ///< Every change stays.
    UndoUnlessCommitted,  ///< Overwritten bytes, which a temporary file keeps if they are many, and the length are
                          ///< restored unless Commit succeeds.
    ReadOnly,             ///< Opened for reading; writing fails.
};

class CUpdateFile : public CByteSource {
public:
    CUpdateFile() = default;
    CUpdateFile(const CUpdateFile&) = delete;
    CUpdateFile& operator=(const CUpdateFile&) = delete;
    ~CUpdateFile() override;

    /// Opens an existing file. On failure, returns false with LastFileError() set.
    bool Open(const std::string& path, EUpdateManner manner);
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
    /// bytes to be overwritten could not be saved; Problem() then has the cause.
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
    struct SOverwritten {
        std::int64_t position;
        std::size_t length;
        std::vector<std::uint8_t> bytes;  ///< empty if they are in the temporary file
        std::int64_t saved;               ///< their position there
    };

    bool Keep(std::size_t count);
    bool Save(SOverwritten& overwritten);
    std::vector<std::uint8_t> BytesOf(const SOverwritten& overwritten);
    void Undo();
    /// Drops what an undo needs.
    void Forget();
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
    std::size_t m_inMemory = 0;  ///< bytes of it
    COutputFile m_saved;         ///< a temporary file beside this one, for further bytes
};

}  // namespace vantrel
