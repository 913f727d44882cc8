// File access on Windows. The only source outside app/ that includes <windows.h>.
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <optional>

#include "files/native_console.h"
#include "files/native_file.h"
#include "files/retry.h"
#include "files/utf.h"

namespace vantrel {

namespace {

HANDLE Handle(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

DWORD ShareMode(ESharing sharing) {
    switch (sharing) {
        case ESharing::Anyone:
            return FILE_SHARE_READ | FILE_SHARE_WRITE;
        case ESharing::Readers:
            return FILE_SHARE_READ;
        case ESharing::Nobody:
            return 0;
    }
    return 0;
}

DWORD Disposition(EOpenMode mode) {
    switch (mode) {
        case EOpenMode::Read:
        case EOpenMode::ReadWrite:
            return OPEN_EXISTING;
        case EOpenMode::CreateTruncate:
            return CREATE_ALWAYS;
        case EOpenMode::CreateNew:
            return CREATE_NEW;
    }
    return OPEN_EXISTING;
}

/// Larger transfers are split into several calls, because the system counts bytes in 32 bits.
constexpr std::size_t kLargestTransfer = 1U << 30U;

/// Whether the last error means that nothing exists at a path, or nothing that this program may access. Other errors
/// leave that open.
bool SaysMissing() {
    static constexpr std::array<DWORD, 9> kMissing = {
        ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND, ERROR_ACCESS_DENIED, ERROR_INVALID_DRIVE,       ERROR_BAD_NETPATH,
        ERROR_BAD_NET_NAME,   ERROR_INVALID_NAME,   ERROR_BAD_PATHNAME,  ERROR_FILENAME_EXCED_RANGE};
    return std::find(kMissing.begin(), kMissing.end(), ::GetLastError()) != kMissing.end();
}

/// What identifies a file.
struct SIdentity {
    BY_HANDLE_FILE_INFORMATION information = {};
    bool isKnown = false;
};

/// No value if there is no file at `path`.
std::optional<SIdentity> IdentityOf(const std::string& path) {
    SIdentity identity;
    const HANDLE handle = ::CreateFileW(WideOf(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return SaysMissing() ? std::nullopt : std::optional(identity);
    }
    identity.isKnown = ::GetFileInformationByHandle(handle, &identity.information) != FALSE;
    ::CloseHandle(handle);
    return identity;
}

/// Sets or clears the mark with which the system removes a file when its last handle is closed. Fails where the file
/// system does not know it.
bool MarkForRemoval(HANDLE handle, bool marked) {
    FILE_DISPOSITION_INFO information = {};
    information.DeleteFile = marked ? TRUE : FALSE;
    return ::SetFileInformationByHandle(handle, FileDispositionInfo, &information, sizeof information) != FALSE;
}

/// `path` with drive and folder.
std::wstring FullPath(const std::wstring& path) {
    std::wstring full(::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(::GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

/// Renames by calling the system. Tries again while another process has the file, or one in the folder, open.
template <typename Call>
bool RenameBriefly(Call call) {
    bool renamed = false;
    TryBriefly([&] {
        renamed = call() != FALSE;
        return renamed || (::GetLastError() != ERROR_SHARING_VIOLATION && ::GetLastError() != ERROR_ACCESS_DENIED);
    });
    return renamed;
}

/// Renames an open file. By path, the system renames only files whose handles allow it to be removed.
bool RenameByHandle(HANDLE handle, const std::string& name, bool replace) {
    const std::wstring full = FullPath(WideOf(name));
    const std::size_t nameBytes = full.size() * sizeof(wchar_t);
    std::vector<std::uint8_t> bytes(sizeof(FILE_RENAME_INFO) + nameBytes);
    auto* const information = reinterpret_cast<FILE_RENAME_INFO*>(bytes.data());
    information->ReplaceIfExists = replace ? TRUE : FALSE;
    information->FileNameLength = static_cast<DWORD>(nameBytes);
    std::copy_n(full.c_str(), full.size() + 1, information->FileName);
    return RenameBriefly([&] {
        return ::SetFileInformationByHandle(handle, FileRenameInfo, information, static_cast<DWORD>(bytes.size()));
    });
}

}  // namespace

bool CNativeFile::OpenTemporary(const std::string& path, ESharing sharing) {
    Close();
    const HANDLE handle = ::CreateFileW(WideOf(path).c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, ShareMode(sharing),
                                        nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    m_handle = reinterpret_cast<std::intptr_t>(handle);
    if (handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    m_temporary = MarkForRemoval(handle, true) ? ETemporary::Vanishing : ETemporary::Staying;
    return true;
}

bool CNativeFile::CompleteWrites() {
    HANDLE second = nullptr;
    const HANDLE process = ::GetCurrentProcess();
    if (!::DuplicateHandle(process, Handle(m_handle), process, &second, 0, FALSE, DUPLICATE_SAME_ACCESS)) {
        return false;
    }
    const BOOL complete = ::CloseHandle(Handle(m_handle));
    m_handle = reinterpret_cast<std::intptr_t>(second);
    return complete != FALSE;
}

ELock CNativeFile::TakeLock() {
    return ELock::Taken;
}

bool CNativeFile::FlushToDisk() {
    return ::FlushFileBuffers(Handle(m_handle)) != FALSE;
}

/// Opens a temporary file again, to rename it or only to keep it in use, without the rights that keep others from
/// reading it. Between both handles, another process may remove it as unused; opening then fails.
bool CNativeFile::Exchange(const std::string& path, bool toRename) {
    ::CloseHandle(Handle(m_handle));
    const HANDLE handle =
        ::CreateFileW(WideOf(path).c_str(), toRename ? GENERIC_READ | DELETE : GENERIC_READ,
                      ShareMode(ESharing::Anyone), nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    m_handle = reinterpret_cast<std::intptr_t>(handle);
    return handle != INVALID_HANDLE_VALUE;
}

std::string CNativeFile::PathToRead(const std::string& path) {
    if (m_temporary == ETemporary::Readable) {
        return path;
    }
    if (m_temporary == ETemporary::Vanishing && !MarkForRemoval(Handle(m_handle), false)) {
        return {};
    }
    m_temporary = ETemporary::Readable;
    return Exchange(path, false) ? path : std::string();
}

bool CNativeFile::GiveName(const std::string& path, const std::string& name, bool replace) {
    if (m_temporary == ETemporary::Readable && !Exchange(path, true)) {
        return false;
    }
    const bool isMarked = m_temporary == ETemporary::Vanishing;
    if (isMarked && !MarkForRemoval(Handle(m_handle), false)) {
        return false;
    }
    if (RenameByHandle(Handle(m_handle), name, replace)) {
        m_temporary = ETemporary::No;
        return true;
    }
    const DWORD error = ::GetLastError();
    if (isMarked && !MarkForRemoval(Handle(m_handle), true)) {
        m_temporary = ETemporary::Staying;
    }
    ::SetLastError(error);
    return false;
}

bool CNativeFile::Open(const std::string& path, EOpenMode mode, ESharing sharing) {
    Close();
    m_temporary = ETemporary::No;
    const DWORD access = mode == EOpenMode::Read ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE;
    const HANDLE handle = ::CreateFileW(WideOf(path).c_str(), access, ShareMode(sharing), nullptr, Disposition(mode),
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
    m_handle = reinterpret_cast<std::intptr_t>(handle);
    return handle != INVALID_HANDLE_VALUE;
}

bool CNativeFile::IsOpen() const {
    return Handle(m_handle) != INVALID_HANDLE_VALUE;
}

bool CNativeFile::Close() {
    if (!IsOpen()) {
        return true;
    }
    const BOOL result = ::CloseHandle(Handle(m_handle));
    m_handle = reinterpret_cast<std::intptr_t>(INVALID_HANDLE_VALUE);
    return result != FALSE;
}

std::size_t CNativeFile::Read(std::span<std::uint8_t> buffer, bool& failed) {
    std::size_t done = 0;
    while (done < buffer.size()) {
        const auto wanted = static_cast<DWORD>(std::min(buffer.size() - done, kLargestTransfer));
        DWORD count = 0;
        if (!::ReadFile(Handle(m_handle), buffer.data() + done, wanted, &count, nullptr)) {
            failed = true;
        }
        if (count == 0) {
            break;
        }
        done += count;
    }
    return done;
}

std::size_t CNativeFile::Write(std::span<const std::uint8_t> bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const auto wanted = static_cast<DWORD>(std::min(bytes.size() - done, kLargestTransfer));
        DWORD count = 0;
        if (!::WriteFile(Handle(m_handle), bytes.data() + done, wanted, &count, nullptr) || count == 0) {
            break;
        }
        done += count;
    }
    return done;
}

std::size_t CNativeFile::CopyFrom(CNativeFile& /*source*/, std::size_t /*length*/) {
    return 0;  // Windows copies only whole files
}

bool CNativeFile::Seek(std::int64_t position) {
    LARGE_INTEGER distance;
    distance.QuadPart = position;
    return ::SetFilePointerEx(Handle(m_handle), distance, nullptr, FILE_BEGIN) != FALSE;
}

std::int64_t CNativeFile::Size() const {
    LARGE_INTEGER size;
    return ::GetFileSizeEx(Handle(m_handle), &size) ? size.QuadPart : -1;
}

bool CNativeFile::Resize(std::int64_t length) {
    return Seek(length) && ::SetEndOfFile(Handle(m_handle)) != FALSE;
}

void CNativeFile::TakeModeOf(const std::string& /*path*/) {}

std::string LastFileError() {
    const DWORD code = ::GetLastError();
    wchar_t text[512] = {};
    DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0, text,
                                    static_cast<DWORD>(std::size(text)), nullptr);
    while (length > 0 && (text[length - 1] == L'\n' || text[length - 1] == L'\r' || text[length - 1] == L'.')) {
        --length;
    }
    return length > 0 ? Utf8Of(std::wstring(text, length)) : "error " + std::to_string(code);
}

EFileKind FileKindOf(const std::string& path) {
    const DWORD lastError = ::GetLastError();
    const DWORD attributes = ::GetFileAttributesW(WideOf(path).c_str());
    const bool missing = attributes == INVALID_FILE_ATTRIBUTES && SaysMissing();
    ::SetLastError(lastError);
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return missing ? EFileKind::Missing : EFileKind::Other;
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return EFileKind::Folder;
    }
    return (attributes & FILE_ATTRIBUTE_DEVICE) != 0 ? EFileKind::Other : EFileKind::File;
}

std::int64_t FileSizeOf(const std::string& path) {
    const DWORD lastError = ::GetLastError();
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    const BOOL known = ::GetFileAttributesExW(WideOf(path).c_str(), GetFileExInfoStandard, &data);
    ::SetLastError(lastError);
    if (known == FALSE || (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return -1;
    }
    return static_cast<std::int64_t>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
}

bool IsSameFile(const std::string& first, const std::string& second) {
    const auto one = IdentityOf(first);
    const auto two = IdentityOf(second);
    if (!one || !two) {
        return false;
    }
    const BY_HANDLE_FILE_INFORMATION& left = one->information;
    const BY_HANDLE_FILE_INFORMATION& right = two->information;
    return !one->isKnown || !two->isKnown ||
           (left.dwVolumeSerialNumber == right.dwVolumeSerialNumber && left.nFileIndexHigh == right.nFileIndexHigh &&
            left.nFileIndexLow == right.nFileIndexLow);
}

bool RemoveFile(const std::string& path) {
    return ::DeleteFileW(WideOf(path).c_str()) != FALSE;
}

void RemoveUnused(const std::string& path) {
    ::DeleteFileW(WideOf(path).c_str());  // fails while the file is open, because temporary files do not share removal
}

bool RenameFile(const std::string& from, const std::string& to, bool replace) {
    return RenameBriefly([&] {
        return ::MoveFileExW(WideOf(from).c_str(), WideOf(to).c_str(), replace ? MOVEFILE_REPLACE_EXISTING : 0);
    });
}

bool LinkFile(const std::string& existing, const std::string& added) {
    return ::CreateHardLinkW(WideOf(added).c_str(), WideOf(existing).c_str(), nullptr) != FALSE;
}

bool MakeFolder(const std::string& path) {
    return ::CreateDirectoryW(WideOf(path).c_str(), nullptr) != FALSE ||
           (::GetLastError() == ERROR_ALREADY_EXISTS && FileKindOf(path) == EFileKind::Folder);
}

bool RemoveFolder(const std::string& path) {
    return ::RemoveDirectoryW(WideOf(path).c_str()) != FALSE;
}

bool FlushFolder(const std::string& path) {
    const HANDLE handle = ::CreateFileW(path.empty() ? L"." : WideOf(path).c_str(), GENERIC_WRITE,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return ::GetLastError() == ERROR_ACCESS_DENIED;  // some file systems open no folders
    }
    const bool flushed = ::FlushFileBuffers(handle) != FALSE || ::GetLastError() == ERROR_ACCESS_DENIED ||
                         ::GetLastError() == ERROR_INVALID_FUNCTION;
    const DWORD error = ::GetLastError();
    ::CloseHandle(handle);
    ::SetLastError(error);
    return flushed;
}

std::vector<std::string> ListFolder(const std::string& path) {
    std::vector<std::string> names;
    WIN32_FIND_DATAW found;
    const HANDLE search = ::FindFirstFileW(WideOf(path + "\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return names;
    }
    do {
        const std::string name = Utf8Of(found.cFileName);
        if (name != "." && name != "..") {
            names.push_back(name);
        }
    } while (::FindNextFileW(search, &found));
    ::FindClose(search);
    std::sort(names.begin(), names.end());
    return names;
}

std::string CurrentFolder() {
    std::wstring buffer(::GetCurrentDirectoryW(0, nullptr), L'\0');
    const DWORD length = ::GetCurrentDirectoryW(static_cast<DWORD>(buffer.size()), buffer.data());
    buffer.resize(length);
    return Utf8Of(buffer);
}

std::string ResolveLink(const std::string& path) {
    return path;
}

void SetFileDate(const std::string& path, std::int64_t seconds) {
    constexpr std::int64_t kTicksPerSecond = 10'000'000;
    constexpr std::int64_t kSecondsFrom1601To1970 = 11'644'473'600;
    const HANDLE handle = ::CreateFileW(WideOf(path).c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                        nullptr, OPEN_EXISTING, 0, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return;
    }
    const auto ticks = static_cast<std::uint64_t>((seconds + kSecondsFrom1601To1970) * kTicksPerSecond);
    const FILETIME time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32U)};
    ::SetFileTime(handle, nullptr, nullptr, &time);
    ::CloseHandle(handle);
}

void UseUtf8Console() {
    ::SetConsoleOutputCP(CP_UTF8);
}

void UseBinaryOutput() {
    ::_setmode(1, _O_BINARY);
}

bool IsTerminal(EStream stream) {
    return ::_isatty(stream == EStream::Output ? 1 : 2) != 0;
}

int TerminalColumns() {
    constexpr int kUsual = 80;
    CONSOLE_SCREEN_BUFFER_INFO information = {};
    const bool known = ::GetConsoleScreenBufferInfo(::GetStdHandle(STD_ERROR_HANDLE), &information) != FALSE;
    return known ? information.srWindow.Right - information.srWindow.Left + 1 : kUsual;
}

}  // namespace vantrel
