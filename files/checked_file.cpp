#include "files/checked_file.h"

#include "files/path.h"
#include "operation/text.h"

namespace vantrel {

void CCheckedInput::OpenOrFail(const std::string& path, const char* pattern, ESharing sharing) {
    OpenOrFail(path, pattern, path, sharing);
}

void CCheckedInput::OpenOrFail(const std::string& path, const char* pattern, const std::string& shownPath,
                               ESharing sharing) {
    if (!Open(path, sharing)) {
        const std::string cause = OpeningProblem(path);
        m_operation.Fail(Format(pattern, shownPath.c_str()), cause);
    }
}

void CCheckedInput::AttachOrOpen(CByteSource* source, const std::string& path, const char* pattern, ESharing sharing) {
    if (source != nullptr) {
        Attach(*source, path);
    } else {
        OpenOrFail(path, pattern, sharing);
    }
}

std::int64_t CCheckedInput::SizeOrFail() const {
    const std::int64_t size = Size();
    if (size < 0) {
        m_operation.Fail(Problem());
    }
    return size;
}

void CCheckedInput::FailIfUnread() const {
    if (HasFailed()) {
        m_operation.Fail(Problem());
    }
}

void CCheckedInput::FailIncomplete() const {
    FailIfUnread();
    m_operation.Fail("Cannot read " + Path() + ": unexpected end of file");
}

void CCheckedOutput::OpenOrFail(const std::string& path, EOutputManner manner, const char* pattern) {
    OpenOrFail(path, manner, pattern, path, ESharing::Anyone);
}

void CCheckedOutput::OpenOrFail(const std::string& path, EOutputManner manner, const char* pattern,
                                const std::string& shownPath, ESharing sharing) {
    if (!Open(path, manner, sharing)) {
        const std::string cause = OpeningProblem(path);
        m_operation.Fail(Format(pattern, shownPath.c_str()), cause);
    }
}

void CCheckedOutput::ReopenOrFail(const char* pattern) {
    if (!Reopen()) {
        const std::string cause = OpeningProblem(TargetPath());
        m_operation.Fail(Format(pattern, TargetPath().c_str()), cause);
    }
}

void CCheckedOutput::WriteOrFail(std::span<const std::uint8_t> bytes) {
    Write(bytes);
    FailIfUnwritten();
}

void CCheckedOutput::WriteZerosOrFail(std::int64_t count) {
    WriteZeros(count);
    FailIfUnwritten();
}

void CCheckedOutput::SeekOrFail(std::int64_t position) {
    Seek(position);
    FailIfUnwritten();
}

void CCheckedOutput::FailIfUnwritten() const {
    if (HasFailed()) {
        m_operation.Fail(Problem());
    }
}

void CCheckedOutput::FinishOrFail() {
    if (!Finish()) {
        m_operation.Fail(Problem());
    }
}

void CCheckedOutput::CommitOrFail() {
    if (!Commit()) {
        m_operation.Fail(Problem());
    }
}

void CCheckedUpdate::OpenOrFail(const std::string& path, EUpdateManner manner, const char* pattern) {
    if (!Open(path, manner)) {
        const std::string cause = OpeningProblem(path);
        m_operation.Fail(Format(pattern, path.c_str()), cause);
    }
    if (WasRestored()) {
        m_operation.Notify(path + ": an interrupted change was undone first");
    }
}

void CCheckedUpdate::ReopenOrFail(const char* pattern) {
    if (!Reopen()) {
        const std::string cause = OpeningProblem(Path());
        m_operation.Fail(Format(pattern, Path().c_str()), cause);
    }
}

std::int64_t CCheckedUpdate::SizeOrFail() const {
    const std::int64_t size = Size();
    if (size < 0) {
        m_operation.Fail(ReadProblem());
    }
    return size;
}

void CCheckedUpdate::SeekOrFail(std::int64_t position) {
    if (!Seek(position)) {
        m_operation.Fail(Problem());
    }
}

void CCheckedUpdate::WriteOrFail(std::span<const std::uint8_t> bytes) {
    if (!Write(bytes)) {
        m_operation.Fail(Problem());
    }
}

void CCheckedUpdate::FailIfUnread() const {
    if (HasFailedReading()) {
        m_operation.Fail(ReadProblem());
    }
}

void CCheckedUpdate::CommitOrFail() {
    if (!Commit()) {
        m_operation.Fail(Problem());
    }
}

std::string OpeningProblem(const std::string& path) {
    const std::string error = LastFileError();
    const std::string folder = FolderOf(path);
    if (FileKindOf(path) == EFileKind::Folder) {
        return path + " is a folder";
    }
    if (!folder.empty() && FileKindOf(folder) == EFileKind::Missing) {
        return "there is no folder " + folder;
    }
    return path + ": " + error;
}

std::string CreationProblem(const std::string& path) {
    return "Cannot create " + path + ": " + LastFileError();
}

}  // namespace vantrel
