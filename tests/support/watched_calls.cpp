#include "tests/support/watched_calls.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

// The names are the linker's: "--wrap=read" sends calls of read to __wrap_read, and those of __real_read to the system.
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
int __real_unlink(const char* path);
int __real_mkdir(const char* path, mode_t mode);
int __real_rmdir(const char* path);
DIR* __real_opendir(const char* path);
struct dirent64* __real_readdir64(DIR* folder);
int __real_closedir(DIR* folder);
}

namespace vantrel::test {

namespace {

constexpr std::array<const char*, 15> kNames = {"open",      "close", "read",   "read the end of", "write",
                                                "copy into", "seek",  "size",   "resize",          "look at",
                                                "rename",    "link",  "remove", "make folder",     "list"};

/// "a/.vantrel-01234567.tmp/b" becomes "a/.vantrel-*.tmp/b".
std::string WithoutRandomPart(std::string path) {
    static constexpr std::string_view kBeginning = ".vantrel-";
    static constexpr std::size_t kDigits = 8;
    const std::size_t start = path.find(kBeginning);
    return start == std::string::npos ? path : path.replace(start + kBeginning.size(), kDigits, "*");
}

/// What is being watched, and what is to fail. Calls come from any thread.
class CWatch {
public:
    CWatch(std::string_view folder, const SFault& fault, const SSystem& system)
        : m_folder(folder), m_fault(fault), m_system(system) {}

    const SSystem& System() const { return m_system; }

    /// The part of a path below the folder; nothing for paths that lie elsewhere.
    std::optional<std::string> Below(std::string_view path) const {
        if (!path.starts_with(std::string_view(m_folder).substr(0, m_folder.size() - 1))) {
            return std::nullopt;
        }
        return WithoutRandomPart(std::string(path.substr(std::min(path.size(), m_folder.size()))));
    }

    /// Takes note of a call; whether it is the one to fail.
    bool Note(const SCall& call) {
        const std::lock_guard lock(m_mutex);
        m_calls.push_back(call);
        if (call != m_fault.call || m_fault.number == 0 || ++m_met != m_fault.number) {
            return false;
        }
        m_hasFailed = true;
        return true;
    }

    template <typename Handle>
    void Keep(Handle handle, SCall opened) {
        const std::lock_guard lock(m_mutex);
        FilesOf(handle)[handle] = std::move(opened);
    }

    /// The call of a kind that concerns an open file; nothing for files that are not watched.
    template <typename Handle>
    std::optional<SCall> CallOn(Handle handle, ECall kind) {
        const std::lock_guard lock(m_mutex);
        const auto found = FilesOf(handle).find(handle);
        if (found == FilesOf(handle).end()) {
            return std::nullopt;
        }
        return SCall{kind, found->second.file, found->second.written};
    }

    template <typename Handle>
    void Drop(Handle handle) {
        const std::lock_guard lock(m_mutex);
        FilesOf(handle).erase(handle);
    }

    std::vector<SCall> Calls() const {
        const std::lock_guard lock(m_mutex);
        return m_calls;
    }

    bool HasFailed() const {
        const std::lock_guard lock(m_mutex);
        return m_hasFailed;
    }

    std::size_t OpenCount() const {
        const std::lock_guard lock(m_mutex);
        return m_files.size() + m_folders.size();
    }

    /// Whether it is the turn of an interruption; every other transfer is one.
    bool TakesInterruption() {
        const std::lock_guard lock(m_mutex);
        m_isInterrupted = !m_isInterrupted;
        return m_isInterrupted;
    }

private:
    std::map<int, SCall>& FilesOf(int /*descriptor*/) { return m_files; }
    std::map<DIR*, SCall>& FilesOf(DIR* /*folder*/) { return m_folders; }

    std::string m_folder;
    SFault m_fault;
    SSystem m_system;
    mutable std::mutex m_mutex;
    std::vector<SCall> m_calls;
    std::map<int, SCall> m_files;
    std::map<DIR*, SCall> m_folders;
    std::size_t m_met = 0;
    bool m_hasFailed = false;
    bool m_isInterrupted = false;
};

/// The one watch there is, because calls of the system have no place for another argument.
std::optional<CWatch> g_watch;

/// Whether the call about a path is the one to fail; errno is set then.
bool FailsAt(const char* path, ECall kind, int error = EIO, bool written = false) {
    const std::optional<std::string> file = g_watch ? g_watch->Below(path) : std::nullopt;
    if (!file || !g_watch->Note({kind, *file, written})) {
        return false;
    }
    errno = error;
    return true;
}

/// The same for an open file.
template <typename Handle>
bool FailsOn(Handle handle, ECall kind, int error = EIO) {
    const std::optional<SCall> call = g_watch ? g_watch->CallOn(handle, kind) : std::nullopt;
    if (!call || !g_watch->Note(*call)) {
        return false;
    }
    errno = error;
    return true;
}

/// How much of a transfer comes about at once; nothing when it is interrupted.
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

std::string TextOf(const SCall& call) {
    return std::string(kNames.at(static_cast<std::size_t>(call.kind))) + " " + call.file +
           (call.written ? " (written)" : "");
}

CWatchedCalls::CWatchedCalls(std::string_view folder, const SFault& fault, const SSystem& system) {
    g_watch.emplace(folder, fault, system);
}

CWatchedCalls::~CWatchedCalls() {
    g_watch.reset();
}

std::vector<SCall> CWatchedCalls::Calls() const {
    return g_watch->Calls();
}

bool CWatchedCalls::HasFailed() const {
    return g_watch->HasFailed();
}

std::size_t CWatchedCalls::OpenCount() const {
    return g_watch->OpenCount();
}

extern "C" {

int __wrap_open64(const char* path, int flags, ...) {
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    const bool written = (flags & O_ACCMODE) != O_RDONLY;
    if (FailsAt(path, ECall::Open, EIO, written)) {
        return -1;
    }
    const int descriptor = __real_open64(path, flags, mode);
    if (descriptor >= 0 && g_watch && g_watch->Below(path)) {
        g_watch->Keep(descriptor, {ECall::Open, *g_watch->Below(path), written});
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
    if (FailsOn(descriptor, ECall::Write, ENOSPC)) {
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
    return FailsOn(descriptor, ECall::Resize, ENOSPC) ? -1 : __real_ftruncate64(descriptor, length);
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
        errno = EINVAL;
        return -1;
    }
    return FailsAt(to, ECall::Rename) ? -1 : __real_renameat2(fromFolder, from, toFolder, to, flags);
}

int __wrap_link(const char* from, const char* to) {
    if (g_watch && g_watch->Below(to) && !g_watch->System().linksFiles) {
        errno = EPERM;
        return -1;
    }
    return FailsAt(to, ECall::Link) ? -1 : __real_link(from, to);
}

int __wrap_unlink(const char* path) {
    return FailsAt(path, ECall::Remove) ? -1 : __real_unlink(path);
}

int __wrap_mkdir(const char* path, mode_t mode) {
    return FailsAt(path, ECall::MakeFolder, ENOSPC) ? -1 : __real_mkdir(path, mode);
}

int __wrap_rmdir(const char* path) {
    return FailsAt(path, ECall::Remove) ? -1 : __real_rmdir(path);
}

DIR* __wrap_opendir(const char* path) {
    if (FailsAt(path, ECall::Open)) {
        return nullptr;
    }
    DIR* const folder = __real_opendir(path);
    if (folder != nullptr && g_watch && g_watch->Below(path)) {
        g_watch->Keep(folder, {ECall::Open, *g_watch->Below(path), false});
    }
    return folder;
}

struct dirent64* __wrap_readdir64(DIR* folder) {
    return FailsOn(folder, ECall::List) ? nullptr : __real_readdir64(folder);
}

int __wrap_closedir(DIR* folder) {
    if (g_watch) {
        g_watch->Drop(folder);
    }
    return __real_closedir(folder);
}

}  // extern "C"

}  // namespace vantrel::test
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,cert-dcl50-cpp)
