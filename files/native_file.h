// File access of the operating system, implemented for Windows and POSIX; everything else in files/ builds on it. Paths
// are UTF-8; the Windows implementation converts them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vantrel {

/// Who else may open a file while it is open here. POSIX has no such restriction.
enum class ESharing { Anyone, Readers, Nobody };

enum class ELock {
    Taken,
    Refused,      ///< Another process has it.
    Unsupported,  ///< The file system has no locks.
};

enum class EOpenMode {
    Read,            ///< An existing file, for reading.
    ReadWrite,       ///< An existing file, for reading and writing.
    CreateTruncate,  ///< A new or emptied file, for writing and reading.
    CreateNew,       ///< A file that must not exist yet, for writing and reading.
};

/// An open file. The destructor closes it. Transfers are unbuffered.
class CNativeFile {
public:
    CNativeFile() = default;
    CNativeFile(const CNativeFile&) = delete;
    CNativeFile& operator=(const CNativeFile&) = delete;
    ~CNativeFile() { Close(); }

    /// Opens `path`, which must not be a folder. On failure, returns false with LastFileError() set.
    bool Open(const std::string& path, EOpenMode mode, ESharing sharing);
    /// Creates a temporary file for writing and reading in the folder of `path`, which must not exist. It disappears
    /// when it is closed, even if the process is killed, unless GiveName gives it a name. Linux files have no name
    /// until then, Windows files are at `path`. If the file system does not support that, it is an ordinary file at
    /// `path`, which RemoveUnused does not remove while it is open here; see StaysWhenClosed.
    bool OpenTemporary(const std::string& path, ESharing sharing);
    /// Whether a temporary file remains at its path when it is closed.
    bool StaysWhenClosed() const { return m_temporary == ETemporary::Staying || m_temporary == ETemporary::Readable; }
    /// The path at which further handles can read a temporary file, which `path` was opened as. From then on, nothing
    /// may be written, and on Windows it stays at its path. On failure, returns an empty path with LastFileError() set.
    std::string PathToRead(const std::string& path);
    bool IsOpen() const;
    /// Returns false if the system reports that written data was lost.
    bool Close();
    /// Reports lost data as Close does, but keeps the file open. Nothing may be written afterwards.
    bool CompleteWrites();
    /// Writes everything to the disk, so that it survives a power failure.
    bool FlushToDisk();
    /// Renames a temporary file, which `path` was opened as, to `name` on the same file system. If `name` exists,
    /// replaces it atomically if `replace` is set, and fails otherwise.
    bool GiveName(const std::string& path, const std::string& name, bool replace);
    /// Locks the file, opened for writing with ESharing::Readers or Nobody, until it is closed. On Windows, opening it
    /// that way has done so.
    ELock TakeLock();
    /// Detaches the file without closing it: it stays open with its sharing mode until the program ends.
    void LeaveOpen() { m_handle = -1; }

    /// Reads at the current position until the buffer is full, the file ends or an error occurs. Returns the number of
    /// bytes read. Sets `failed` on an error and otherwise leaves it unchanged.
    std::size_t Read(std::span<std::uint8_t> buffer, bool& failed);
    /// Writes at the current position. Returns the number of bytes written: fewer than all only after an error.
    std::size_t Write(std::span<const std::uint8_t> bytes);
    /// Copies up to `length` bytes from the current position of `source` to the current position of this file within
    /// the system, and advances both. Returns the number of bytes copied, which is smaller, or 0, if the system does
    /// not support it or an error occurs. The caller copies the rest with Read and Write, which report errors.
    std::size_t CopyFrom(CNativeFile& source, std::size_t length);
    /// Moves to a byte position from the start, possibly beyond the end. Returns false for a negative position.
    bool Seek(std::int64_t position);
    /// Length in bytes, −1 if unknown.
    std::int64_t Size() const;
    /// Truncates or extends the file to a length in bytes.
    bool Resize(std::int64_t length);
    /// Gives this file the permissions of the file at `path`, if there is one. Windows files have none.
    void TakeModeOf(const std::string& path);

private:
    enum class ETemporary { No, Vanishing, Staying, Readable };

    bool Exchange(const std::string& path, bool toRename);

    std::intptr_t m_handle = -1;
    ETemporary m_temporary = ETemporary::No;
};

/// The system's text for the last error of this thread, for example "No space left on device".
std::string LastFileError();

enum class EFileKind { Missing, File, Folder, Other };

/// What `path` is, following symbolic links; Other also if something may be there but cannot be examined. Does not
/// change LastFileError().
EFileKind FileKindOf(const std::string& path);
/// Length in bytes of the file at `path`, −1 if unknown. Does not change LastFileError().
std::int64_t FileSizeOf(const std::string& path);
/// Whether both paths lead to the same existing file, including by links or different spellings. Returns true if that
/// cannot be determined, because callers replace one file only if it is not the other.
bool IsSameFile(const std::string& first, const std::string& second);
/// The path of the file that a symbolic link leads to; `path` itself if it is no link or leads nowhere. Windows links
/// are not followed.
std::string ResolveLink(const std::string& path);
/// Sets the date of the last change, in seconds since 1970 (UTC), if the file system can store it.
void SetFileDate(const std::string& path, std::int64_t seconds);
bool RemoveFile(const std::string& path);
/// Removes a file that a temporary file of this or another process stayed as, unless that process still has it open.
/// Without effect where the file system has no locks.
void RemoveUnused(const std::string& path);
/// Renames a file or a folder on its file system. If `to` exists, replaces it atomically if `replace` is set, and fails
/// otherwise.
bool RenameFile(const std::string& from, const std::string& to, bool replace);
/// Makes a hard link. Fails if the file system does not support it or `added` exists.
bool LinkFile(const std::string& existing, const std::string& added);
/// Makes one folder. Returns true if it exists afterwards.
bool MakeFolder(const std::string& path);
/// Removes an empty folder.
bool RemoveFolder(const std::string& path);
/// Writes the names in a folder to the disk, so that they survive a power failure. `path` ends in a separator or is
/// empty. Returns true if the system does not support that.
bool FlushFolder(const std::string& path);
/// The names in a folder without "." and "..", sorted by bytes; empty if it cannot be read.
std::vector<std::string> ListFolder(const std::string& path);
#ifdef _WIN32
/// The current folder without a closing separator; empty if unknown. Only the window needs it.
std::string CurrentFolder();
#endif

}  // namespace vantrel
