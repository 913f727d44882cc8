// The watched calls of POSIX systems.
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include "files/native_file.h"
#include "tests/support/test_folder.h"
#include "tests/support/watch.h"

// The linker defines the names: "--wrap=read" redirects read to __wrap_read, and __real_read to the system's read.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,cert-dcl50-cpp)
extern "C" {
int __real_open64(const char* path, int flags, mode_t mode);
int __real_close(int descriptor);
ssize_t __real_read(int descriptor, void* buffer, std::size_t count);
ssize_t __real_write(int descriptor, const void* buffer, std::size_t count);
ssize_t __real_copy_file_range(int from, off64_t* fromOffset, int to, off64_t* toOffset, std::size_t count,
                               unsigned int flags);
off64_t __real_lseek64(int descriptor, off64_t offset, int from);
int __real_fstat64(int descriptor, struct stat* status);
int __real_ftruncate64(int descriptor, off64_t length);
int __real_stat64(const char* path, struct stat* status);
int __real_lstat64(const char* path, struct stat* status);
int __real_rename(const char* from, const char* to);
int __real_renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned int flags);
int __real_link(const char* from, const char* to);
int __real_linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags);
int __real_fcntl64(int descriptor, int command, int argument);
int __real_flock(int descriptor, int operation);
int __real_fsync(int descriptor);
int __real_unlink(const char* path);
int __real_mkdir(const char* path, mode_t mode);
int __real_rmdir(const char* path);
DIR* __real_opendir(const char* path);
struct dirent64* __real_readdir64(DIR* folder);
int __real_closedir(DIR* folder);
}

namespace vantrel::test {

namespace {

Handle HandleOf(DIR* folder) {
    return reinterpret_cast<Handle>(folder);
}

int CodeOf(EFailure failure) {
    return failure == EFailure::NoSpace ? ENOSPC : EIO;
}

/// Whether the call on a path must fail; sets errno then.
bool FailsAt(const char* path, ECall kind, EFailure failure = EFailure::Device, bool written = false) {
    const bool fails = IsToFailAt(path, kind, written);
    errno = fails ? CodeOf(failure) : errno;
    return fails;
}

/// Whether the call on an open file must fail; sets errno then.
bool FailsOn(Handle handle, ECall kind, EFailure failure = EFailure::Device) {
    const bool fails = IsToFailOn(handle, kind);
    errno = fails ? CodeOf(failure) : errno;
    return fails;
}

/// How many bytes of a transfer to move; no value if it is interrupted.
std::optional<std::size_t> TransferOf(int descriptor, std::size_t count) {
    if (!g_watch || g_watch->System().transfersWhole || !g_watch->CallOn(descriptor, ECall::Read)) {
        return count;
    }
    if (g_watch->TakesInterruption()) {
        errno = EINTR;
        return std::nullopt;
    }
    return (count + 1) / 2;
}

}  // namespace

std::optional<std::string> ReadOpenFile(const std::string& path) {
    return ReadText(path);
}

std::string SystemText(EFailure failure) {
    errno = CodeOf(failure);
    return LastFileError();
}

extern "C" {

int __wrap_open64(const char* path, int flags, ...) {
    mode_t mode = 0;
    const bool isUnnamed = (flags & O_TMPFILE) == O_TMPFILE;
    if ((flags & O_CREAT) != 0 || isUnnamed) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    const bool written = (flags & O_ACCMODE) != O_RDONLY;
    const std::string file = isUnnamed ? std::string(path) + "unnamed" : path;
    if (isUnnamed && g_watch && g_watch->Below(file) && !g_watch->System().vanishingFiles) {
        errno = g_watch->System().unnamedError;
        return -1;
    }
    if (FailsAt(file.c_str(), ECall::Open, EFailure::Device, written)) {
        return -1;
    }
    const int descriptor = __real_open64(path, flags, mode);
    if (descriptor >= 0 && g_watch) {
        g_watch->Keep(descriptor, file, written);
    }
    return descriptor;
}

int __wrap_close(int descriptor) {
    const bool fails = FailsOn(descriptor, ECall::Close);
    if (g_watch) {
        g_watch->Drop(descriptor);
    }
    const int result = __real_close(descriptor);
    if (fails) {
        errno = EIO;
        return -1;
    }
    return result;
}

ssize_t __wrap_read(int descriptor, void* buffer, std::size_t count) {
    const std::optional<std::size_t> transfer = TransferOf(descriptor, count);
    if (!transfer) {
        return -1;
    }
    const ssize_t result = __real_read(descriptor, buffer, *transfer);
    return FailsOn(descriptor, result == 0 ? ECall::ReadEnd : ECall::Read) ? -1 : result;
}

ssize_t __wrap_write(int descriptor, const void* buffer, std::size_t count) {
    if (FailsOn(descriptor, ECall::Write, EFailure::NoSpace)) {
        const ssize_t half = __real_write(descriptor, buffer, count / 2);
        errno = ENOSPC;
        return half < 0 ? half : -1;
    }
    const std::optional<std::size_t> transfer = TransferOf(descriptor, count);
    return transfer ? __real_write(descriptor, buffer, *transfer) : -1;
}

ssize_t __wrap_copy_file_range(int from, off64_t* fromOffset, int to, off64_t* toOffset, std::size_t count,
                               unsigned int flags) {
    if (FailsOn(to, ECall::Copy)) {
        return -1;
    }
    const std::optional<std::size_t> transfer = TransferOf(to, count);
    return transfer ? __real_copy_file_range(from, fromOffset, to, toOffset, *transfer, flags) : -1;
}

off64_t __wrap_lseek64(int descriptor, off64_t offset, int from) {
    return FailsOn(descriptor, ECall::Seek) ? -1 : __real_lseek64(descriptor, offset, from);
}

int __wrap_fstat64(int descriptor, struct stat* status) {
    return FailsOn(descriptor, ECall::Size) ? -1 : __real_fstat64(descriptor, status);
}

int __wrap_ftruncate64(int descriptor, off64_t length) {
    return FailsOn(descriptor, ECall::Resize, EFailure::NoSpace) ? -1 : __real_ftruncate64(descriptor, length);
}

int __wrap_stat64(const char* path, struct stat* status) {
    return FailsAt(path, ECall::Look) ? -1 : __real_stat64(path, status);
}

int __wrap_lstat64(const char* path, struct stat* status) {
    return FailsAt(path, ECall::Look) ? -1 : __real_lstat64(path, status);
}

int __wrap_rename(const char* from, const char* to) {
    return FailsAt(to, ECall::Rename) ? -1 : __real_rename(from, to);
}

int __wrap_renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned int flags) {
    if (g_watch && g_watch->Below(to) && !g_watch->System().renamesWithoutReplacing) {
        errno = g_watch->System().renameError;
        return -1;
    }
    return FailsAt(to, ECall::Rename) ? -1 : __real_renameat2(fromFolder, from, toFolder, to, flags);
}

int __wrap_link(const char* from, const char* to) {
    if (g_watch && g_watch->Below(to) && !g_watch->System().linksFiles) {
        errno = g_watch->System().linkError;
        return -1;
    }
    return FailsAt(to, ECall::Link) ? -1 : __real_link(from, to);
}

int __wrap_linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) {
    return FailsAt(to, ECall::Link) ? -1 : __real_linkat(fromFolder, from, toFolder, to, flags);
}

/// All data was written through the first descriptor.
int __wrap_fcntl64(int descriptor, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    const int argument = va_arg(arguments, int);
    va_end(arguments);
    const std::optional<SCall> call = g_watch ? g_watch->CallOn(descriptor, ECall::Duplicate) : std::nullopt;
    if (FailsOn(descriptor, ECall::Duplicate)) {
        return -1;
    }
    const int second = __real_fcntl64(descriptor, command, argument);
    if (call && second >= 0) {
        g_watch->KeepSecond(second, call->file);
    }
    return second;
}

int __wrap_flock(int descriptor, int operation) {
    return FailsOn(descriptor, ECall::Lock) ? -1 : __real_flock(descriptor, operation);
}

int __wrap_fsync(int descriptor) {
    const std::optional<SCall> call = g_watch ? g_watch->CallOn(descriptor, ECall::Flush) : std::nullopt;
    if (call && !g_watch->System().flushesFolders && (call->file.empty() || call->file.ends_with('/'))) {
        errno = g_watch->System().folderError;
        return -1;
    }
    return FailsOn(descriptor, ECall::Flush) ? -1 : __real_fsync(descriptor);
}

int __wrap_unlink(const char* path) {
    return FailsAt(path, ECall::Remove) ? -1 : __real_unlink(path);
}

int __wrap_mkdir(const char* path, mode_t mode) {
    return FailsAt(path, ECall::MakeFolder, EFailure::NoSpace) ? -1 : __real_mkdir(path, mode);
}

int __wrap_rmdir(const char* path) {
    return FailsAt(path, ECall::Remove) ? -1 : __real_rmdir(path);
}

DIR* __wrap_opendir(const char* path) {
    if (FailsAt(path, ECall::Open)) {
        return nullptr;
    }
    DIR* const folder = __real_opendir(path);
    if (folder != nullptr && g_watch) {
        g_watch->Keep(HandleOf(folder), path, false);
    }
    return folder;
}

struct dirent64* __wrap_readdir64(DIR* folder) {
    return FailsOn(HandleOf(folder), ECall::List) ? nullptr : __real_readdir64(folder);
}

int __wrap_closedir(DIR* folder) {
    if (g_watch) {
        g_watch->Drop(HandleOf(folder));
    }
    return __real_closedir(folder);
}

}  // extern "C"

}  // namespace vantrel::test
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,cert-dcl50-cpp)
