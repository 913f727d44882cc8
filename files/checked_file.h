// Files of a conversion: every failure ends the conversion with a text that names the file.
//
// Failure patterns hold one "%s", which stands for the path. Where a message deliberately names another file, the
// caller passes that path as `shownPath`.
#pragma once

#include <string>

#include "files/input_file.h"
#include "files/output_file.h"
#include "files/update_file.h"
#include "operation/operation.h"

namespace vantrel {

class CCheckedInput : public CInputFile {
public:
    explicit CCheckedInput(COperation& operation) : m_operation(operation) {}

    void OpenOrFail(const std::string& path, const char* pattern, ESharing sharing = ESharing::Anyone);
    void OpenOrFail(const std::string& path, const char* pattern, const std::string& shownPath,
                    ESharing sharing = ESharing::Anyone);

    /// Attaches `source`, the content of the file, or opens the file if it is null.
    void AttachOrOpen(CByteSource* source, const std::string& path, const char* pattern,
                      ESharing sharing = ESharing::Anyone);

    /// Length in bytes.
    std::int64_t SizeOrFail() const;

    /// Fails if reading or measuring has failed since the file was opened. The end of the file is not an error.
    void FailIfUnread() const;
    /// Fails because the file ended before all expected bytes were read, or with the system's error if there is one.
    [[noreturn]] void FailIncomplete() const;

private:
    COperation& m_operation;
};

class CCheckedOutput : public COutputFile {
public:
    explicit CCheckedOutput(COperation& operation) : m_operation(operation) {}

    void OpenOrFail(const std::string& path, EOutputManner manner, const char* pattern);
    void OpenOrFail(const std::string& path, EOutputManner manner, const char* pattern, const std::string& shownPath,
                    ESharing sharing);
    void ReopenOrFail(const char* pattern);

    void WriteOrFail(std::span<const std::uint8_t> bytes);
    void WriteZerosOrFail(std::int64_t count);
    void SeekOrFail(std::int64_t position);
    /// Fails if a write or seek has failed since the file was opened.
    void FailIfUnwritten() const;

    /// Finish and Commit of COutputFile.
    void FinishOrFail();
    void CommitOrFail();

private:
    COperation& m_operation;
};

class CCheckedUpdate : public CUpdateFile {
public:
    explicit CCheckedUpdate(COperation& operation) : m_operation(operation) {}

    void OpenOrFail(const std::string& path, EUpdateManner manner, const char* pattern);
    void ReopenOrFail(const char* pattern);

    std::int64_t SizeOrFail() const;
    void SeekOrFail(std::int64_t position);
    void WriteOrFail(std::span<const std::uint8_t> bytes);
    /// Fails if reading or measuring has failed since the file was opened. The end of the file is not an error.
    void FailIfUnread() const;
    void CommitOrFail();

private:
    COperation& m_operation;
};

/// Why a file cannot be opened: "game.iso: Permission denied". The cause is LastFileError(), unless the path itself
/// shows a better one: it is a folder, or its folder is missing.
std::string OpeningProblem(const std::string& path);

/// The text for a file that cannot be created. The cause is LastFileError().
std::string CreationProblem(const std::string& path);

}  // namespace vantrel
