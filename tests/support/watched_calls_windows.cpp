// The watched calls of Windows. Programs call the system through pointers such as __imp_ReadFile, which the loader
// sets.
// "--wrap=__imp_ReadFile" makes the file layer use the pointer __wrap___imp_ReadFile; __real___imp_ReadFile is the
// loader's pointer.
#include <gtest/gtest.h>
#include <windows.h>

#include "files/native_file.h"
#include "files/utf.h"
#include "tests/support/watch.h"

extern "C" {
extern decltype(&CreateFileW) __real___imp_CreateFileW;
extern decltype(&CloseHandle) __real___imp_CloseHandle;
extern decltype(&ReadFile) __real___imp_ReadFile;
extern decltype(&WriteFile) __real___imp_WriteFile;
extern decltype(&SetFilePointerEx) __real___imp_SetFilePointerEx;
extern decltype(&GetFileSizeEx) __real___imp_GetFileSizeEx;
extern decltype(&SetEndOfFile) __real___imp_SetEndOfFile;
extern decltype(&GetFileAttributesW) __real___imp_GetFileAttributesW;
extern decltype(&GetFileAttributesExW) __real___imp_GetFileAttributesExW;
extern decltype(&GetFileInformationByHandle) __real___imp_GetFileInformationByHandle;
extern decltype(&DeleteFileW) __real___imp_DeleteFileW;
extern decltype(&MoveFileExW) __real___imp_MoveFileExW;
extern decltype(&CreateHardLinkW) __real___imp_CreateHardLinkW;
extern decltype(&CreateDirectoryW) __real___imp_CreateDirectoryW;
extern decltype(&RemoveDirectoryW) __real___imp_RemoveDirectoryW;
extern decltype(&FindFirstFileW) __real___imp_FindFirstFileW;
extern decltype(&FindNextFileW) __real___imp_FindNextFileW;
extern decltype(&SetFileInformationByHandle) __real___imp_SetFileInformationByHandle;
extern decltype(&DuplicateHandle) __real___imp_DuplicateHandle;
extern decltype(&FlushFileBuffers) __real___imp_FlushFileBuffers;
extern decltype(&FindClose) __real___imp_FindClose;
}

namespace vantrel::test {

namespace {

Handle HandleOf(HANDLE file) {
    return reinterpret_cast<Handle>(file);
}

void SetLastErrorTo(EFailure failure) {
    ::SetLastError(failure == EFailure::NoSpace ? ERROR_DISK_FULL : ERROR_IO_DEVICE);
}

/// Whether the call on a path must fail; sets the last error then.
bool FailsAt(const wchar_t* path, ECall kind, EFailure failure = EFailure::Device, bool written = false) {
    const bool fails = IsToFailAt(Utf8Of(path), kind, written);
    if (fails) {
        SetLastErrorTo(failure);
    }
    return fails;
}

/// Whether the call on an open file must fail; sets the last error then.
bool FailsOn(HANDLE file, ECall kind, EFailure failure = EFailure::Device) {
    const bool fails = IsToFailOn(HandleOf(file), kind);
    if (fails) {
        SetLastErrorTo(failure);
    }
    return fails;
}

/// How many bytes of a transfer to move.
DWORD TransferOf(HANDLE file, DWORD count) {
    const bool whole =
        !g_watch || g_watch->System().transfersWhole || !g_watch->CallOn(HandleOf(file), ECall::Read).has_value();
    return whole ? count : count / 2 + count % 2;
}

HANDLE WINAPI WatchedCreateFile(LPCWSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                                DWORD disposition, DWORD attributes, HANDLE pattern) {
    const bool written = (access & GENERIC_WRITE) != 0;
    // Without access to the data, the call examines the file or prepares to set its date.
    const bool looks = access == 0 || access == FILE_WRITE_ATTRIBUTES;
    if (FailsAt(path, looks ? ECall::Look : ECall::Open, EFailure::Device, written)) {
        return INVALID_HANDLE_VALUE;
    }
    const HANDLE file = __real___imp_CreateFileW(path, access, sharing, security, disposition, attributes, pattern);
    if (file != INVALID_HANDLE_VALUE && g_watch) {
        g_watch->Keep(HandleOf(file), Utf8Of(path), written);
    }
    return file;
}

BOOL WINAPI WatchedCloseHandle(HANDLE file) {
    const bool fails = FailsOn(file, ECall::Close);
    if (g_watch) {
        g_watch->Drop(HandleOf(file));
    }
    const BOOL result = __real___imp_CloseHandle(file);
    if (fails) {
        SetLastErrorTo(EFailure::Device);
    }
    return fails ? FALSE : result;
}

BOOL WINAPI WatchedReadFile(HANDLE file, LPVOID buffer, DWORD count, LPDWORD done, LPOVERLAPPED overlapped) {
    const BOOL result = __real___imp_ReadFile(file, buffer, TransferOf(file, count), done, overlapped);
    if (FailsOn(file, *done == 0 ? ECall::ReadEnd : ECall::Read)) {
        *done = 0;
        return FALSE;
    }
    return result;
}

BOOL WINAPI WatchedWriteFile(HANDLE file, LPCVOID buffer, DWORD count, LPDWORD done, LPOVERLAPPED overlapped) {
    if (FailsOn(file, ECall::Write)) {
        __real___imp_WriteFile(file, buffer, count / 2, done, overlapped);
        *done = 0;
        SetLastErrorTo(EFailure::NoSpace);
        return FALSE;
    }
    return __real___imp_WriteFile(file, buffer, TransferOf(file, count), done, overlapped);
}

BOOL WINAPI WatchedSetFilePointer(HANDLE file, LARGE_INTEGER distance, PLARGE_INTEGER position, DWORD from) {
    return FailsOn(file, ECall::Seek) ? FALSE : __real___imp_SetFilePointerEx(file, distance, position, from);
}

BOOL WINAPI WatchedGetFileSize(HANDLE file, PLARGE_INTEGER size) {
    return FailsOn(file, ECall::Size) ? FALSE : __real___imp_GetFileSizeEx(file, size);
}

BOOL WINAPI WatchedSetEndOfFile(HANDLE file) {
    return FailsOn(file, ECall::Resize, EFailure::NoSpace) ? FALSE : __real___imp_SetEndOfFile(file);
}

DWORD WINAPI WatchedGetFileAttributes(LPCWSTR path) {
    return FailsAt(path, ECall::Look) ? INVALID_FILE_ATTRIBUTES : __real___imp_GetFileAttributesW(path);
}

BOOL WINAPI WatchedGetFileAttributesEx(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID data) {
    return FailsAt(path, ECall::Look) ? FALSE : __real___imp_GetFileAttributesExW(path, level, data);
}

BOOL WINAPI WatchedGetFileInformation(HANDLE file, LPBY_HANDLE_FILE_INFORMATION information) {
    return FailsOn(file, ECall::Look) ? FALSE : __real___imp_GetFileInformationByHandle(file, information);
}

BOOL WINAPI WatchedDeleteFile(LPCWSTR path) {
    return FailsAt(path, ECall::Remove) ? FALSE : __real___imp_DeleteFileW(path);
}

BOOL WINAPI WatchedMoveFile(LPCWSTR from, LPCWSTR to, DWORD flags) {
    return FailsAt(to, ECall::Rename) ? FALSE : __real___imp_MoveFileExW(from, to, flags);
}

BOOL WINAPI WatchedCreateHardLink(LPCWSTR added, LPCWSTR existing, LPSECURITY_ATTRIBUTES security) {
    if (g_watch && g_watch->Below(Utf8Of(added)) && !g_watch->System().linksFiles) {
        ::SetLastError(ERROR_INVALID_FUNCTION);
        return FALSE;
    }
    return FailsAt(added, ECall::Link) ? FALSE : __real___imp_CreateHardLinkW(added, existing, security);
}

BOOL WINAPI WatchedCreateDirectory(LPCWSTR path, LPSECURITY_ATTRIBUTES security) {
    return FailsAt(path, ECall::MakeFolder, EFailure::NoSpace) ? FALSE : __real___imp_CreateDirectoryW(path, security);
}

BOOL WINAPI WatchedRemoveDirectory(LPCWSTR path) {
    return FailsAt(path, ECall::Remove) ? FALSE : __real___imp_RemoveDirectoryW(path);
}

std::string NameIn(LPVOID renaming) {
    const auto* const information = static_cast<const FILE_RENAME_INFO*>(renaming);
    return Utf8Of(std::wstring(information->FileName, information->FileNameLength / sizeof(wchar_t)));
}

BOOL WINAPI WatchedSetFileInformation(HANDLE file, FILE_INFO_BY_HANDLE_CLASS kind, LPVOID data, DWORD length) {
    if (kind == FileDispositionInfo && g_watch && !g_watch->System().vanishingFiles &&
        g_watch->CallOn(HandleOf(file), ECall::Mark)) {
        ::SetLastError(ERROR_INVALID_FUNCTION);
        return FALSE;
    }
    const bool fails =
        kind == FileRenameInfo ? FailsAt(WideOf(NameIn(data)).c_str(), ECall::Rename) : FailsOn(file, ECall::Mark);
    return fails ? FALSE : __real___imp_SetFileInformationByHandle(file, kind, data, length);
}

/// All data was written through the first handle.
BOOL WINAPI WatchedDuplicateHandle(HANDLE process, HANDLE file, HANDLE target, LPHANDLE second, DWORD access,
                                   BOOL inherit, DWORD options) {
    const std::optional<SCall> call = g_watch ? g_watch->CallOn(HandleOf(file), ECall::Duplicate) : std::nullopt;
    if (FailsOn(file, ECall::Duplicate)) {
        return FALSE;
    }
    const BOOL done = __real___imp_DuplicateHandle(process, file, target, second, access, inherit, options);
    if (call && done) {
        g_watch->KeepSecond(HandleOf(*second), call->file);
    }
    return done;
}

BOOL WINAPI WatchedFlushFileBuffers(HANDLE file) {
    return FailsOn(file, ECall::Flush) ? FALSE : __real___imp_FlushFileBuffers(file);
}

HANDLE WINAPI WatchedFindFirstFile(LPCWSTR pattern, LPWIN32_FIND_DATAW data) {
    const std::wstring_view whole = pattern;
    const std::wstring path(whole.substr(0, whole.find_last_of(L'\\')));
    if (FailsAt(path.c_str(), ECall::Open)) {
        return INVALID_HANDLE_VALUE;
    }
    const HANDLE search = __real___imp_FindFirstFileW(pattern, data);
    if (search != INVALID_HANDLE_VALUE && g_watch) {
        g_watch->Keep(HandleOf(search), Utf8Of(path), false);
    }
    return search;
}

BOOL WINAPI WatchedFindNextFile(HANDLE search, LPWIN32_FIND_DATAW data) {
    return FailsOn(search, ECall::List) ? FALSE : __real___imp_FindNextFileW(search, data);
}

BOOL WINAPI WatchedFindClose(HANDLE search) {
    if (g_watch) {
        g_watch->Drop(HandleOf(search));
    }
    return __real___imp_FindClose(search);
}

}  // namespace

std::optional<std::string> ReadOpenFile(const std::string& path) {
    const HANDLE file = __real___imp_CreateFileW(WideOf(path).c_str(), GENERIC_READ,
                                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                                 OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED)) << path;  // marked for removal
        return std::nullopt;
    }
    LARGE_INTEGER size = {};
    EXPECT_TRUE(__real___imp_GetFileSizeEx(file, &size)) << path;
    std::string content(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD count = 0;
    EXPECT_TRUE(__real___imp_ReadFile(file, content.data(), static_cast<DWORD>(content.size()), &count, nullptr))
        << path;
    EXPECT_EQ(count, content.size()) << path;
    __real___imp_CloseHandle(file);
    return content;
}

std::string SystemText(EFailure failure) {
    SetLastErrorTo(failure);
    return LastFileError();
}

}  // namespace vantrel::test

extern "C" {
decltype(&CreateFileW) __wrap___imp_CreateFileW = vantrel::test::WatchedCreateFile;
decltype(&CloseHandle) __wrap___imp_CloseHandle = vantrel::test::WatchedCloseHandle;
decltype(&ReadFile) __wrap___imp_ReadFile = vantrel::test::WatchedReadFile;
decltype(&WriteFile) __wrap___imp_WriteFile = vantrel::test::WatchedWriteFile;
decltype(&SetFilePointerEx) __wrap___imp_SetFilePointerEx = vantrel::test::WatchedSetFilePointer;
decltype(&GetFileSizeEx) __wrap___imp_GetFileSizeEx = vantrel::test::WatchedGetFileSize;
decltype(&SetEndOfFile) __wrap___imp_SetEndOfFile = vantrel::test::WatchedSetEndOfFile;
decltype(&GetFileAttributesW) __wrap___imp_GetFileAttributesW = vantrel::test::WatchedGetFileAttributes;
decltype(&GetFileAttributesExW) __wrap___imp_GetFileAttributesExW = vantrel::test::WatchedGetFileAttributesEx;
decltype(&GetFileInformationByHandle) __wrap___imp_GetFileInformationByHandle =
    vantrel::test::WatchedGetFileInformation;
decltype(&DeleteFileW) __wrap___imp_DeleteFileW = vantrel::test::WatchedDeleteFile;
decltype(&MoveFileExW) __wrap___imp_MoveFileExW = vantrel::test::WatchedMoveFile;
decltype(&CreateHardLinkW) __wrap___imp_CreateHardLinkW = vantrel::test::WatchedCreateHardLink;
decltype(&CreateDirectoryW) __wrap___imp_CreateDirectoryW = vantrel::test::WatchedCreateDirectory;
decltype(&RemoveDirectoryW) __wrap___imp_RemoveDirectoryW = vantrel::test::WatchedRemoveDirectory;
decltype(&FindFirstFileW) __wrap___imp_FindFirstFileW = vantrel::test::WatchedFindFirstFile;
decltype(&FindNextFileW) __wrap___imp_FindNextFileW = vantrel::test::WatchedFindNextFile;
decltype(&SetFileInformationByHandle) __wrap___imp_SetFileInformationByHandle =
    vantrel::test::WatchedSetFileInformation;
decltype(&DuplicateHandle) __wrap___imp_DuplicateHandle = vantrel::test::WatchedDuplicateHandle;
decltype(&FlushFileBuffers) __wrap___imp_FlushFileBuffers = vantrel::test::WatchedFlushFileBuffers;
decltype(&FindClose) __wrap___imp_FindClose = vantrel::test::WatchedFindClose;
}
