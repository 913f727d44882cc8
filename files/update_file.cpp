#include "files/update_file.h"

#include <algorithm>

namespace vantrel {

namespace {

/// Overwritten bytes that are kept in memory.
constexpr std::size_t kMostInMemory = 16U << 20U;

}  // namespace

CUpdateFile::~CUpdateFile() {
    Undo();
}

bool CUpdateFile::Open(const std::string& path, EUpdateManner manner) {
    Undo();
    m_manner = manner;
    m_path = path;
    m_writeProblem.clear();
    m_readProblem.clear();
    m_position = 0;
    const EOpenMode mode = manner == EUpdateManner::ReadOnly ? EOpenMode::Read : EOpenMode::ReadWrite;
    if (!m_file.Open(path, mode, ESharing::Anyone)) {
        return false;
    }
    m_changed = false;
    m_oldSize = m_file.Size();
    if (m_oldSize < 0) {
        m_file.Close();  // without the old length, appended bytes could not be removed again
        return false;
    }
    return true;
}

std::int64_t CUpdateFile::Size() const {
    const std::int64_t size = m_file.Size();
    if (size < 0) {
        NoteReadFailure();
    }
    return size;
}

bool CUpdateFile::Reopen() {
    m_position = 0;
    if (m_manner != EUpdateManner::InPlace) {
        return m_file.Seek(0);
    }
    if (!m_file.Close()) {
        return NoteWriteFailure();
    }
    return m_file.Open(m_path, EOpenMode::ReadWrite, ESharing::Anyone);
}

bool CUpdateFile::NoteWriteFailure() {
    if (m_writeProblem.empty()) {
        m_writeProblem = "Cannot write " + m_path + ": " + LastFileError();
    }
    return false;
}

void CUpdateFile::NoteReadFailure() const {
    if (m_readProblem.empty()) {
        m_readProblem = "Cannot read " + m_path + ": " + LastFileError();
    }
}

bool CUpdateFile::MoveTo(std::int64_t position) {
    if (!m_file.Seek(position)) {
        return false;
    }
    m_position = position;
    return true;
}

bool CUpdateFile::Seek(std::int64_t position) {
    return MoveTo(position) || NoteWriteFailure();
}

std::size_t CUpdateFile::ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) {
    bool failed = !MoveTo(position);
    const std::size_t count = failed ? 0 : m_file.Read(buffer, failed);
    if (failed) {
        NoteReadFailure();
    }
    m_position += static_cast<std::int64_t>(count);
    return count;
}

bool CUpdateFile::Keep(std::size_t count) {
    const std::int64_t old = std::min(m_oldSize - m_position, static_cast<std::int64_t>(count));
    if (m_manner != EUpdateManner::UndoUnlessCommitted || old <= 0) {
        return true;
    }
    SOverwritten overwritten{m_position, static_cast<std::size_t>(old),
                             std::vector<std::uint8_t>(static_cast<std::size_t>(old)), 0};
    bool failed = false;
    if (m_file.Read(overwritten.bytes, failed) != overwritten.bytes.size() || !m_file.Seek(m_position)) {
        return NoteWriteFailure();
    }
    if (m_inMemory + overwritten.length <= kMostInMemory) {
        m_inMemory += overwritten.length;
    } else if (!Save(overwritten)) {
        return false;
    }
    m_overwritten.push_back(std::move(overwritten));
    return true;
}

/// Moves the bytes to the temporary file.
bool CUpdateFile::Save(SOverwritten& overwritten) {
    if (!m_saved.IsOpen() && !m_saved.Open(m_path, EOutputManner::CommitNew)) {
        return NoteWriteFailure();
    }
    overwritten.saved = m_saved.Position();
    if (!m_saved.Write(overwritten.bytes)) {
        return NoteWriteFailure();
    }
    overwritten.bytes = {};
    return true;
}

std::vector<std::uint8_t> CUpdateFile::BytesOf(const SOverwritten& overwritten) {
    std::vector<std::uint8_t> bytes = overwritten.bytes;
    if (bytes.size() != overwritten.length) {
        bytes.resize(overwritten.length);
        bytes.resize(m_saved.ReadBack(overwritten.saved, bytes));
    }
    return bytes;
}

bool CUpdateFile::Write(std::span<const std::uint8_t> bytes) {
    if (!Keep(bytes.size())) {
        return false;
    }
    m_changed = true;
    const std::size_t written = m_file.Write(bytes);
    m_position += static_cast<std::int64_t>(written);
    return written == bytes.size() || NoteWriteFailure();
}

void CUpdateFile::Undo() {
    if (m_file.IsOpen() && m_changed && m_manner == EUpdateManner::UndoUnlessCommitted) {
        // Undoing the last change first restores bytes that were changed twice.
        for (auto change = m_overwritten.rbegin(); change != m_overwritten.rend(); ++change) {
            if (m_file.Seek(change->position)) {
                m_file.Write(BytesOf(*change));
            }
        }
        m_file.Resize(m_oldSize);
    }
    Forget();
    m_file.Close();
}

void CUpdateFile::Forget() {
    m_overwritten.clear();
    m_inMemory = 0;
    m_saved.Abandon();
}

bool CUpdateFile::Commit() {
    if (m_manner == EUpdateManner::UndoUnlessCommitted && !m_writeProblem.empty()) {
        Undo();
        return false;
    }
    CloseForGood();
    Forget();
    return m_writeProblem.empty();
}

/// If closing loses data, undoes the change through a new handle.
void CUpdateFile::CloseForGood() {
    if (m_file.Close()) {
        return;
    }
    NoteWriteFailure();
    if (m_manner == EUpdateManner::UndoUnlessCommitted && m_file.Open(m_path, EOpenMode::ReadWrite, ESharing::Anyone)) {
        Undo();
    }
}

}  // namespace vantrel
