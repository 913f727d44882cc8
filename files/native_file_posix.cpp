// File access on POSIX systems.
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>

#include "files/native_console.h"
#include "files/native_file.h"
#include "files/path.h"

namespace vantrel {

namespace {

constexpr mode_t kNewFileMode = 0666;
constexpr mode_t kNewFolderMode = 0777;

int Descriptor(std::intptr_t handle) {
    return static_cast<int>(handle);
}

int OpenFlags(EOpenMode mode) {
    switch (mode) {
        case EOpenMode::Read:
            return O_RDONLY | O_NONBLOCK;  // opening a pipe that nobody writes to would wait forever
        case EOpenMode::ReadWrite:
            return O_RDWR;
        case EOpenMode::CreateTruncate:
            return O_RDWR | O_CREAT | O_TRUNC;
        case EOpenMode::CreateNew:
            return O_RDWR | O_CREAT | O_EXCL;
    }
    return O_RDONLY;
}

/// Sets the last error and returns false.
bool FailWith(int error) {
    errno = error;
    return false;
}

/// Whether the last error means that nothing exists at a path, or nothing that this program may access. Other errors
/// leave that open.
bool SaysMissing() {
    return errno == ENOENT || errno == ENOTDIR || errno == EACCES || errno == ELOOP || errno == ENAMETOOLONG;
}

/// Examines a path without changing the last error. Returns false if nothing is there; the mode is 0 if that is
/// unknown.
bool Look(const std::string& path, struct stat& status) {
    const int lastError = errno;
    const bool known = ::stat(path.c_str(), &status) == 0;
    const bool missing = !known && SaysMissing();
    if (!known) {
        status = {};
    }
    errno = lastError;
    return !missing;
}

bool IsSameInode(const struct stat& one, const struct stat& two) {
    return one.st_dev == two.st_dev && one.st_ino == two.st_ino;
}

/// For file systems that cannot rename without replacing: makes a hard link and removes the first name. If the removal
/// fails, removes the link again.
bool RenameByLink(const std::string& from, const std::string& to) {
    if (::link(from.c_str(), to.c_str()) != 0) {
        return false;
    }
    if (::unlink(from.c_str()) == 0) {
        return true;
    }
    const int error = errno;
    ::unlink(to.c_str());
    return FailWith(error);
}

/// The folder of a path, as the system names it.
std::string OpenableFolder(const std::string& folder) {
    return folder.empty() ? "." : folder;
}

/// For file systems without hard links: checks that `to` does not exist, then renames. Processes that do so in the same
/// folder take turns, where the file system has locks.
bool RenameAfterLook(const std::string& from, const std::string& to) {
    const int folder = ::open(OpenableFolder(FolderOf(to)).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ::flock(folder, LOCK_EX);
    struct stat status = {};
    const bool exists = ::lstat(to.c_str(), &status) == 0;
    const bool renamed = !exists && errno == ENOENT && std::rename(from.c_str(), to.c_str()) == 0;
    const int error = exists ? EEXIST : errno;
    ::close(folder);
    return renamed || FailWith(error);
}

bool RenameWithoutReplacing(const std::string& from, const std::string& to) {
#ifdef RENAME_NOREPLACE
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return false;
    }
#endif
    if (RenameByLink(from, to)) {
        return true;
    }
    const bool hasNoLinks = errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS;
    return hasNoLinks && RenameAfterLook(from, to);
}

/// The path of an open file, with or without a name.
std::string PathOfDescriptor(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

bool Lock(int descriptor) {
    return ::flock(descriptor, LOCK_EX | LOCK_NB) == 0;
}

/// Opens a file without a name. Returns −1 with errno EOPNOTSUPP if the system does not support it.
int OpenUnnamed([[maybe_unused]] const std::string& folder) {
#ifdef O_TMPFILE
    const int descriptor = ::open(OpenableFolder(folder).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kNewFileMode);
    struct stat status = {};
    if (descriptor >= 0 && ::stat(PathOfDescriptor(descriptor).c_str(), &status) == 0) {
        Lock(descriptor);
        return descriptor;
    }
    if (descriptor >= 0) {
        ::close(descriptor);  // without /proc, it could not get a name
    } else if (errno != EISDIR && errno != EINVAL && errno != ENOSYS) {
        return -1;
    }
#endif
    errno = EOPNOTSUPP;
    return -1;
}

/// Creates a locked file. Tries again if another process takes it for unused before it is locked, and removes it.
int CreateLocked(const std::string& path) {
    constexpr int kTries = 100;
    constexpr std::chrono::milliseconds kDelay{1};
    for (int attempt = 0; attempt < kTries; ++attempt) {
        const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kNewFileMode);
        if (descriptor < 0 && attempt > 0 && errno == EEXIST) {
            std::this_thread::sleep_for(kDelay);
            continue;
        }
        if (descriptor < 0) {
            return -1;
        }
        const bool isTaken = !Lock(descriptor) && errno == EWOULDBLOCK;
        // The number of links does not tell, because some file systems only hide the name of an open file that is
        // removed.
        struct stat status = {};
        const int error = ::stat(path.c_str(), &status) == 0 ? 0 : errno;
        if (error == 0 && !isTaken) {
            return descriptor;
        }
        ::close(descriptor);
        if (error != 0 && error != ENOENT) {
            ::unlink(path.c_str());
            errno = error;
            return -1;
        }
    }
    errno = EAGAIN;
    return -1;
}

/// Names an unnamed file. Only a name that does not exist yet can be given in one step.
bool LinkUnnamed(int descriptor, const std::string& temporary, const std::string& name, bool replace) {
    const std::string unnamed = PathOfDescriptor(descriptor);
    if (::linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) {
        return true;
    }
    if (!replace || errno != EEXIST ||
        ::linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, temporary.c_str(), AT_SYMLINK_FOLLOW) != 0) {
        return false;
    }
    if (std::rename(temporary.c_str(), name.c_str()) == 0) {
        return true;
    }
    const int error = errno;
    ::unlink(temporary.c_str());
    return FailWith(error);
}

}  // namespace

bool CNativeFile::OpenTemporary(const std::string& path, ESharing /*sharing*/) {
    Close();
    m_handle = OpenUnnamed(FolderOf(path));
    m_temporary = ETemporary::Vanishing;
    if (m_handle < 0 && errno == EOPNOTSUPP) {
        m_handle = CreateLocked(path);
        m_temporary = ETemporary::Staying;
    }
    return m_handle >= 0;
}

bool CNativeFile::CompleteWrites() {
    // A second descriptor keeps the lock and, if there is none, stands for the name.
    const int second = ::fcntl(Descriptor(m_handle), F_DUPFD_CLOEXEC, 0);
    if (second < 0) {
        return false;
    }
    const bool complete = ::close(Descriptor(m_handle)) == 0;
    m_handle = second;
    return complete;
}

ELock CNativeFile::TakeLock() {
    if (Lock(Descriptor(m_handle))) {
        return ELock::Taken;
    }
    return errno == EWOULDBLOCK ? ELock::Refused : ELock::Unsupported;
}

bool CNativeFile::FlushToDisk() {
    return ::fsync(Descriptor(m_handle)) == 0;
}

std::string CNativeFile::PathToRead(const std::string& path) {
    return m_temporary == ETemporary::Vanishing ? PathOfDescriptor(Descriptor(m_handle)) : path;
}

bool CNativeFile::GiveName(const std::string& path, const std::string& name, bool replace) {
    const bool named = m_temporary == ETemporary::Vanishing ? LinkUnnamed(Descriptor(m_handle), path, name, replace)
                                                            : RenameFile(path, name, replace);
    m_temporary = named ? ETemporary::No : m_temporary;
    return named;
}

bool CNativeFile::Open(const std::string& path, EOpenMode mode, ESharing /*sharing*/) {
    Close();
    m_temporary = ETemporary::No;
    m_handle = ::open(path.c_str(), OpenFlags(mode) | O_CLOEXEC, kNewFileMode);
    if (m_handle < 0 || mode != EOpenMode::Read) {
        return m_handle >= 0;  // opening a folder for writing fails anyway
    }
    struct stat status = {};
    const int error = ::fstat(Descriptor(m_handle), &status) != 0 ? errno : S_ISDIR(status.st_mode) ? EISDIR : 0;
    if (error != 0) {
        Close();
        return FailWith(error);
    }
    return true;
}

bool CNativeFile::IsOpen() const {
    return m_handle >= 0;
}

bool CNativeFile::Close() {
    if (!IsOpen()) {
        return true;
    }
    const int result = ::close(Descriptor(m_handle));
    m_handle = -1;
    return result == 0;
}

std::size_t CNativeFile::Read(std::span<std::uint8_t> buffer, bool& failed) {
    std::size_t done = 0;
    while (done < buffer.size()) {
        const ssize_t count = ::read(Descriptor(m_handle), buffer.data() + done, buffer.size() - done);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            failed = true;
        }
        if (count <= 0) {
            break;
        }
        done += static_cast<std::size_t>(count);
    }
    return done;
}

std::size_t CNativeFile::Write(std::span<const std::uint8_t> bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::write(Descriptor(m_handle), bytes.data() + done, bytes.size() - done);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        done += static_cast<std::size_t>(count);
    }
    return done;
}

std::size_t CNativeFile::CopyFrom([[maybe_unused]] CNativeFile& source, [[maybe_unused]] std::size_t length) {
    std::size_t done = 0;
#ifdef __linux__
    while (done < length) {
        const ssize_t count =
            ::copy_file_range(Descriptor(source.m_handle), nullptr, Descriptor(m_handle), nullptr, length - done, 0);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        done += static_cast<std::size_t>(count);
    }
#endif
    return done;
}

bool CNativeFile::Seek(std::int64_t position) {
    const off_t reached = ::lseek(Descriptor(m_handle), position, SEEK_SET);
    // Some devices stay at position 0 without an error.
    return reached >= 0 && (reached == position || FailWith(ESPIPE));
}

std::int64_t CNativeFile::Size() const {
    struct stat status = {};
    return ::fstat(Descriptor(m_handle), &status) == 0 ? static_cast<std::int64_t>(status.st_size) : -1;
}

bool CNativeFile::Resize(std::int64_t length) {
    return ::ftruncate(Descriptor(m_handle), length) == 0;
}

void CNativeFile::TakeModeOf(const std::string& path) {
    constexpr mode_t kPermissions = 0777;
    struct stat status = {};
    if (Look(path, status) && S_ISREG(status.st_mode)) {
        ::fchmod(Descriptor(m_handle), status.st_mode & kPermissions);
    }
}

std::string LastFileError() {
    return std::strerror(errno);
}

EFileKind FileKindOf(const std::string& path) {
    struct stat status = {};
    if (!Look(path, status)) {
        return EFileKind::Missing;
    }
    if (S_ISREG(status.st_mode)) {
        return EFileKind::File;
    }
    return S_ISDIR(status.st_mode) ? EFileKind::Folder : EFileKind::Other;
}

std::int64_t FileSizeOf(const std::string& path) {
    struct stat status = {};
    return Look(path, status) && S_ISREG(status.st_mode) ? static_cast<std::int64_t>(status.st_size) : -1;
}

bool IsSameFile(const std::string& first, const std::string& second) {
    struct stat one = {};
    struct stat two = {};
    if (!Look(first, one) || !Look(second, two)) {
        return false;
    }
    const bool inDoubt = one.st_mode == 0 || two.st_mode == 0;
    return inDoubt || IsSameInode(one, two);
}

bool RemoveFile(const std::string& path) {
    return ::unlink(path.c_str()) == 0;
}

void RemoveUnused(const std::string& path) {
    constexpr int kFlags = O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC;
    int descriptor = ::open(path.c_str(), O_RDWR | kFlags);  // locks of NFS need it
    if (descriptor < 0) {
        descriptor = ::open(path.c_str(), O_RDONLY | kFlags);
    }
    if (descriptor < 0) {
        return;
    }
    struct stat own = {};
    struct stat named = {};
    // While this process waited, the file may have been removed, and its name given to another one.
    if (::fstat(descriptor, &own) == 0 && S_ISREG(own.st_mode) && Lock(descriptor) &&
        ::stat(path.c_str(), &named) == 0 && IsSameInode(own, named)) {
        ::unlink(path.c_str());
    }
    ::close(descriptor);
}

bool RenameFile(const std::string& from, const std::string& to, bool replace) {
    return replace ? std::rename(from.c_str(), to.c_str()) == 0 : RenameWithoutReplacing(from, to);
}

bool LinkFile(const std::string& existing, const std::string& added) {
    return ::link(existing.c_str(), added.c_str()) == 0;
}

bool MakeFolder(const std::string& path) {
    return ::mkdir(path.c_str(), kNewFolderMode) == 0 || (errno == EEXIST && FileKindOf(path) == EFileKind::Folder);
}

bool RemoveFolder(const std::string& path) {
    return ::rmdir(path.c_str()) == 0;
}

bool FlushFolder(const std::string& path) {
    const int descriptor = ::open(OpenableFolder(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    const bool flushed = ::fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP;
    const int error = errno;
    ::close(descriptor);
    return flushed || FailWith(error);
}

std::vector<std::string> ListFolder(const std::string& path) {
    struct SCloser {
        void operator()(DIR* folder) const { ::closedir(folder); }
    };
    std::vector<std::string> names;
    const std::unique_ptr<DIR, SCloser> folder(::opendir(path.c_str()));
    if (!folder) {
        return names;
    }
    while (const dirent* entry = ::readdir(folder.get())) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") {
            names.push_back(name);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string ResolveLink(const std::string& path) {
    struct stat status = {};
    if (::lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) {
        return path;
    }
    char resolved[PATH_MAX] = {};
    return ::realpath(path.c_str(), resolved) != nullptr ? resolved : path;
}

void SetFileDate(const std::string& path, std::int64_t seconds) {
    struct timespec times[2] = {};
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = static_cast<time_t>(seconds);
    ::utimensat(AT_FDCWD, path.c_str(), times, 0);
}

void UseUtf8Console() {}

void UseBinaryOutput() {}

bool IsTerminal(EStream stream) {
    return ::isatty(stream == EStream::Output ? STDOUT_FILENO : STDERR_FILENO) != 0;
}

int TerminalColumns() {
    constexpr int kUsual = 80;
    struct winsize size = {};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

}  // namespace vantrel
