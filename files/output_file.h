// A file that a conversion writes. Two manners, between which a conversion sees no difference: in place, where what is
// written stays whatever happens; and transactional, where the target appears only when everything is written.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "files/input_file.h"
#include "files/native_file.h"

namespace vantrel {

enum class EOutputManner {
    InPlace,        ///< The target itself is created or emptied and written without a buffer.
    CommitNew,      ///< A temporary file beside the target, renamed by Commit unless the target exists by then.
    CommitReplace,  ///< The same, and an existing target is replaced by Commit.
};

class COutputFile {
public:
    COutputFile() = default;
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;
    /// A transactional output that was not committed leaves nothing behind.
    ~COutputFile();

    /// Creates the output. False, with LastFileError() set, when that fails.
    bool Open(const std::string& path, EOutputManner manner, ESharing sharing = ESharing::Anyone);
    bool IsOpen() const { return m_file.IsOpen(); }

    /// Writes at the current position and moves on. False when not everything could be written; the cause is kept for
    /// Commit.
    bool Write(std::span<const std::uint8_t> bytes);
    /// Writes `count` zero bytes. A long run of them at the end of a transactional output becomes a hole, where the
    /// file system knows holes.
    bool WriteZeros(std::int64_t count);
    /// Copies up to buffer.size() bytes from a byte position of `source` to the current position and moves on: within
    /// the system where that is possible, through the buffer otherwise. The number of bytes that the source supplied,
    /// smaller only at its end or after an error of reading; HasFailed tells of the writing.
    std::size_t Copy(CByteSource& source, std::int64_t position, std::span<std::uint8_t> buffer);
    bool Seek(std::int64_t position);
    /// Begins a second stage of writing, at position 0. In place the target is really closed and opened again without
    /// being emptied; a transactional output goes on. False, with LastFileError() set, when that fails.
    bool Reopen();
    std::int64_t Position() const { return m_position; }
    /// Length in bytes of what has been written so far.
    std::int64_t Size() const;

    /// Brings everything to the file and closes it, so that only the renaming is left. False when anything failed since
    /// Open.
    bool Finish();
    /// Finish, and give the target its name. False when anything failed since Open; then nothing is left behind, except
    /// in place.
    bool Commit();
    /// Closes without keeping a transactional output.
    void Abandon();
    /// Lets go of an output in place without closing it: it stays open, and shared no further, until the program ends.
    void LeaveOpen();

    /// Whether anything written since Open was lost.
    bool HasFailed() const { return !m_problem.empty(); }
    EOutputManner Manner() const { return m_manner; }
    /// The path of the target, whatever file is written meanwhile.
    const std::string& TargetPath() const { return m_targetPath; }
    /// Why Finish or Commit returned false, as a text that names the target and the cause.
    const std::string& Problem() const { return m_problem; }

private:
    bool Flush();
    bool PlaceZeros();
    bool ReachEnd();
    std::size_t CopyWithinSystem(CByteSource& source, std::int64_t position, std::size_t length);
    void MoveOn(std::size_t count);
    bool NoteFailure();

    CNativeFile m_file;
    EOutputManner m_manner = EOutputManner::InPlace;
    ESharing m_sharing = ESharing::Anyone;
    std::string m_targetPath;
    std::string m_temporaryPath;
    std::string m_problem;
    std::vector<std::uint8_t> m_pending;
    std::int64_t m_position = 0;
    std::int64_t m_writtenEnd = 0;
    std::int64_t m_unplacedZeros = 0;  ///< Zeros before m_position, at the end, that are neither pending nor written.
};

}  // namespace vantrel
