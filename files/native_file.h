// The one place where the file handles of Windows and POSIX differ. Everything else in files/ is built on this.
// Paths are UTF-8 everywhere; the Windows implementation converts them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vantrel {

/// Who else may open a file while it is open here. POSIX does not know the difference.
enum class ESharing { Anyone, Readers, Nobody };

enum class EOpenMode {
    Read,            ///< An existing file, for reading.
    ReadWrite,       ///< An existing file, for reading and writing.
    CreateTruncate,  ///< A new or emptied file, for writing and reading.
    CreateNew,       ///< A file that must not exist yet, for writing and reading.
};

/// An open file, closed at the end of its life. Transfers are unbuffered.
class CNativeFile {
public:
    CNativeFile() = default;
    CNativeFile(const CNativeFile&) = delete;
    CNativeFile& operator=(const CNativeFile&) = delete;
    ~CNativeFile() { Close(); }

    /// Opens `path`; a folder is never opened. False, with LastFileError() set, when that fails.
    bool Open(const std::string& path, EOpenMode mode, ESharing sharing);
    bool IsOpen() const;
    /// False when the system reports that something written was lost.
    bool Close();
    /// Lets go of the file without closing it: it stays open, and shared no further, until the program ends.
    void LeaveOpen() { m_handle = -1; }

    /// Reads at the current position until the buffer is full, the file ends or an error occurs; the number of
    /// bytes read. `failed` is set on an error and left alone otherwise.
    std::size_t Read(std::span<std::uint8_t> buffer, bool& failed);
    /// Writes all bytes at the current position; the number written, which is smaller after an error.
    std::size_t Write(std::span<const std::uint8_t> bytes);
    /// Copies up to `length` bytes from the current position of `source` to the current one here without taking them
    /// through the program, and moves both on; the number copied. It ends early, and may copy nothing, wherever the
    /// system cannot or an error occurs: what is left is for Read and Write, which then tell the error.
    std::size_t CopyFrom(CNativeFile& source, std::size_t length);
    /// Moves to a byte position from the start, which may lie beyond the end.
    bool Seek(std::int64_t position);
    /// Length in bytes, −1 when it cannot be told.
    std::int64_t Size() const;
    /// Cuts or extends the file to a length in bytes.
    bool Resize(std::int64_t length);

private:
    std::intptr_t m_handle = -1;
};

/// What the system said about the last failing call of this thread, as a text like "No space left on device".
std::string LastFileError();

enum class EFileKind { Missing, File, Folder, Other };

/// What stands at `path`, symbolic links followed; Other when something may stand there but cannot be looked at. Leaves
/// LastFileError() as it was.
EFileKind FileKindOf(const std::string& path);
/// Length in bytes of the file at `path`, −1 when it cannot be told. Leaves LastFileError() as it was.
std::int64_t FileSizeOf(const std::string& path);
/// Whether both paths lead to the same existing file, by whatever links or spellings. In doubt they do: who asks wants
/// to replace one and keep the other.
bool IsSameFile(const std::string& first, const std::string& second);
bool RemoveFile(const std::string& path);
/// Gives a file another name in the same folder. An existing file of that name is replaced in one step when
/// `replace` is set and is otherwise an error.
bool RenameFile(const std::string& from, const std::string& to, bool replace);
/// Gives the content of a file a second name. False where the file system cannot or the name is taken.
bool LinkFile(const std::string& existing, const std::string& added);
/// Makes one folder; true when it exists afterwards.
bool MakeFolder(const std::string& path);
/// Removes an empty folder.
bool RemoveFolder(const std::string& path);
/// The names in a folder, without "." and "..", sorted by bytes; empty when it cannot be read.
std::vector<std::string> ListFolder(const std::string& path);
/// The current folder without a closing separator, empty when it cannot be told.
std::string CurrentFolder();

}  // namespace vantrel
