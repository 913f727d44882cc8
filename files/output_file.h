// An output of a conversion, written in one of two manners that look the same to the conversion: in place, where
// everything written stays in any case; or transactional, where the target appears only when it is complete.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "files/input_file.h"
#include "files/native_file.h"

namespace vantrel {

enum class EOutputManner {
    InPlace,        ///< Creates or truncates the target and writes it unbuffered.
    CommitNew,      ///< Writes a temporary file, which Commit gives the target's name, or fails if the target exists.
    CommitReplace,  ///< The same, but Commit replaces an existing target, whose permissions stay; follows links.
    CommitNewFlushed,      ///< Like CommitNew; everything is written to the disk, the content before the name.
    CommitReplaceFlushed,  ///< The same for CommitReplace, which does so only if it replaces a file.
};

/// Whether an existing target is replaced instead of refused.
constexpr bool Replaces(EOutputManner manner) {
    return manner == EOutputManner::CommitReplace || manner == EOutputManner::CommitReplaceFlushed;
}

/// Whether everything is written to the disk, even if nothing is replaced.
constexpr bool IsFlushed(EOutputManner manner) {
    return manner == EOutputManner::CommitNewFlushed || manner == EOutputManner::CommitReplaceFlushed;
}

class COutputFile {
public:
    COutputFile() = default;
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;
    /// Removes a transactional output that was not committed.
    ~COutputFile();

    /// Creates the output, a transactional one in the folder of the target. On failure, returns false with
    /// LastFileError() set.
    bool Open(const std::string& path, EOutputManner manner, ESharing sharing = ESharing::Anyone);
    /// Creates a transactional output at `place`, a path that does not exist yet, where it waits after CommitAs(place).
    /// A killed process leaves it there. Failures as above.
    bool OpenAt(const std::string& place, const std::string& path, EOutputManner manner);

    /// Writes at the current position and advances it. Returns false if not everything could be written; Problem() then
    /// has the cause.
    bool Write(std::span<const std::uint8_t> bytes);
    /// Writes `count` zero bytes. A long run at the end of a transactional output becomes a hole if the file system
    /// supports sparse files.
    bool WriteZeros(std::int64_t count);
    /// Copies up to buffer.size() bytes from a byte position of `source` to the current position and advances it:
    /// within the system if possible, otherwise through the buffer. Returns the number of bytes read from the source:
    /// fewer than buffer.size() only at its end or after a read error. HasFailed reports write errors.
    std::size_t Copy(CByteSource& source, std::int64_t position, std::span<std::uint8_t> buffer);
    bool Seek(std::int64_t position);
    /// Continues at position 0. In place, closes the target and opens it again without truncating it. On failure,
    /// returns false with LastFileError() set.
    bool Reopen();
    std::int64_t Position() const { return m_position; }
    /// Number of bytes from the start to the end of everything written so far.
    std::int64_t Size() const;

    /// Writes all data, so that only naming the file remains. Returns false if anything has failed since Open.
    bool Finish();
    /// Finishes the output and gives it the target's name. Returns false if anything has failed since Open; the output
    /// is then removed unless it was written in place.
    bool Commit();
    /// Commits a transactional output under the name `path`, which must not exist, instead of the target's. Messages
    /// still name the target.
    bool CommitAs(const std::string& path);
    /// Closes the output, and removes it if it is transactional.
    void Abandon();
    /// Detaches an output in place without closing it: it stays open with its sharing mode until the program ends.
    void LeaveOpen();

    /// Whether writing, seeking or committing has failed since Open.
    bool HasFailed() const { return !m_problem.empty(); }
    EOutputManner Manner() const { return m_manner; }
    /// Whether everything is written to the disk.
    bool Flushes() const { return m_flushes; }
    /// The path of the target, not of the temporary file. If a link is replaced, the path of the file behind it.
    const std::string& TargetPath() const { return m_targetPath; }
    /// The path at which further handles can read the output, which is finished. On failure, returns an empty path;
    /// Problem() then has the cause.
    std::string PathToRead();
    /// The first failure as a text with the target and the cause; empty if there was none.
    const std::string& Problem() const { return m_problem; }

private:
    void Begin(const std::string& path, EOutputManner manner, ESharing sharing);
    bool OpenTemporary();
    void TakeMode();
    bool Flush();
    bool PlaceZeros();
    bool ReachEnd();
    std::size_t CopyWithinSystem(CByteSource& source, std::int64_t position, std::size_t length);
    bool CommitAs(const std::string& path, bool replace);
    void MoveOn(std::size_t count);
    bool NoteFailure();

    CNativeFile m_file;
    EOutputManner m_manner = EOutputManner::InPlace;
    ESharing m_sharing = ESharing::Anyone;
    std::string m_targetPath;
    std::string m_temporaryPath;
    bool m_isPlaced = false;  ///< Whether the temporary path is where the output waits for its name.
    bool m_isFinished = false;
    bool m_flushes = false;
    std::string m_problem;
    std::vector<std::uint8_t> m_pending;
    std::int64_t m_position = 0;
    std::int64_t m_writtenEnd = 0;
    std::int64_t m_unplacedZeros = 0;  ///< Zeros at the end, before m_position, that are neither pending nor written.
};

}  // namespace vantrel
