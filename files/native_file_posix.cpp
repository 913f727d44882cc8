// File handles of POSIX systems.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>

#include "files/native_console.h"
#include "files/native_file.h"

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
            return O_RDONLY;
        case EOpenMode::ReadWrite:
            return O_RDWR;
        case EOpenMode::CreateTruncate:
            return O_RDWR | O_CREAT | O_TRUNC;
        case EOpenMode::CreateNew:
            return O_RDWR | O_CREAT | O_EXCL;
    }
    return O_RDONLY;
}

}  // namespace

bool CNativeFile::Open(const std::string& path, EOpenMode mode, ESharing /*sharing*/) {
    Close();
    m_handle = ::open(path.c_str(), OpenFlags(mode) | O_CLOEXEC, kNewFileMode);
    if (m_handle < 0) {
        return false;
    }
    struct stat status = {};
    if (::fstat(Descriptor(m_handle), &status) == 0 && S_ISDIR(status.st_mode)) {
        Close();
        errno = EISDIR;
        return false;
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
    return ::lseek(Descriptor(m_handle), position, SEEK_SET) == position;
}

std::int64_t CNativeFile::Size() const {
    struct stat status = {};
    return ::fstat(Descriptor(m_handle), &status) == 0 ? static_cast<std::int64_t>(status.st_size) : -1;
}

bool CNativeFile::Resize(std::int64_t length) {
    return ::ftruncate(Descriptor(m_handle), length) == 0;
}

std::string LastFileError() {
    return std::strerror(errno);
}

EFileKind FileKindOf(const std::string& path) {
    const int lastError = errno;
    struct stat status = {};
    const bool known = ::stat(path.c_str(), &status) == 0;
    errno = lastError;
    if (!known) {
        return EFileKind::Missing;
    }
    if (S_ISREG(status.st_mode)) {
        return EFileKind::File;
    }
    return S_ISDIR(status.st_mode) ? EFileKind::Folder : EFileKind::Other;
}

bool IsSameFile(const std::string& first, const std::string& second) {
    struct stat one = {};
    struct stat two = {};
    return ::stat(first.c_str(), &one) == 0 && ::stat(second.c_str(), &two) == 0 && one.st_dev == two.st_dev &&
           one.st_ino == two.st_ino;
}

bool RemoveFile(const std::string& path) {
    return ::unlink(path.c_str()) == 0;
}

bool RenameFile(const std::string& from, const std::string& to, bool replace) {
    if (replace) {
        return std::rename(from.c_str(), to.c_str()) == 0;
    }
    if (::link(from.c_str(), to.c_str()) == 0) {
        return ::unlink(from.c_str()) == 0;
    }
    if (errno == EEXIST) {
        return false;
    }
    // A file system without hard links: look first, then rename.
    struct stat status = {};
    if (::lstat(to.c_str(), &status) == 0) {
        errno = EEXIST;
        return false;
    }
    return std::rename(from.c_str(), to.c_str()) == 0;
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

std::string CurrentFolder() {
    char buffer[PATH_MAX] = {};
    return ::getcwd(buffer, sizeof buffer) != nullptr ? buffer : "";
}

void UseUtf8Console() {}

}  // namespace vantrel
