#include "files/update_file.h"

#include <algorithm>

#include "files/refused.h"

namespace vantrel {

namespace {

constexpr auto kSector = static_cast<std::int64_t>(kDiskSector);
/// Collected sectors are written from this number on: 8 MiB.
constexpr std::size_t kMostCollected = 16'384;

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
    m_wasRestored = false;
    if (manner != EUpdateManner::InPlace) {
        m_journal.emplace(ResolveLink(path));
    }
    const EOpenMode mode = manner == EUpdateManner::ReadOnly ? EOpenMode::Read : EOpenMode::ReadWrite;
    if (!m_file.Open(path, mode, CanUndo() ? ESharing::Readers : ESharing::Anyone)) {
        return false;
    }
    if (manner == EUpdateManner::ReadOnly && m_journal->Exists()) {
        m_file.Close();
        throw CRefused(path +
                       ": a change of this file was interrupted; run a command that changes it to undo that first");
    }
    m_oldSize = CanUndo() && !OpenRestored() ? -1 : m_file.Size();
    m_size = m_oldSize;
    if (m_oldSize < 0) {
        m_file.Close();  // without the old length, appended bytes could not be removed again
        return false;
    }
    return true;
}

/// Undoes an interrupted change, which no other process may be making. On failure, returns false with LastFileError()
/// set.
bool CUpdateFile::OpenRestored() {
    if (m_file.TakeLock() == ELock::Refused) {
        m_file.Close();
        throw CRefused(m_path + ": another process is changing this file");
    }
    if (!m_journal->Exists()) {
        return true;
    }
    m_wasRestored = m_journal->Restore(m_file) && m_journal->Remove();
    return m_wasRestored;
}

std::int64_t CUpdateFile::Size() const {
    const std::int64_t size = m_file.Size();
    if (size < 0) {
        NoteReadFailure();
        return size;
    }
    return CanUndo() ? m_size : size;
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
    bool failed = !Apply() || !MoveTo(position);
    const std::size_t count = failed ? 0 : m_file.Read(buffer, failed);
    if (failed) {
        NoteReadFailure();
    }
    m_position += static_cast<std::int64_t>(count);
    return count;
}

/// The content of a sector with the collected changes.
bool CUpdateFile::Load(std::int64_t sector, std::vector<std::uint8_t>& content) {
    const std::int64_t position = sector * kSector;
    const std::int64_t length = std::clamp<std::int64_t>(m_size - position, 0, kSector);
    content.resize(static_cast<std::size_t>(length));
    bool failed = length > 0 && !m_file.Seek(position);
    if (length > 0 && !failed) {
        m_file.Read(content, failed);  // what is not in the file yet is zeros
    }
    return !failed;
}

bool CUpdateFile::Collect(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const std::int64_t sector = m_position / kSector;
        const auto offset = static_cast<std::size_t>(m_position % kSector);
        const std::size_t count = std::min(bytes.size(), kDiskSector - offset);
        const auto [found, isNew] = m_collected.try_emplace(sector);
        if (isNew && count < kDiskSector && !Load(sector, found->second)) {
            return NoteWriteFailure();
        }
        found->second.resize(std::max(found->second.size(), offset + count));
        std::copy_n(bytes.begin(), count, found->second.begin() + static_cast<std::ptrdiff_t>(offset));
        m_position += static_cast<std::int64_t>(count);
        m_size = std::max(m_size, m_position);
        bytes = bytes.subspan(count);
    }
    return m_collected.size() < kMostCollected || Apply();
}

bool CUpdateFile::AddToJournal(std::int64_t position, std::span<const std::uint8_t> content) {
    const std::int64_t size = m_file.Size();
    const std::int64_t length = std::clamp<std::int64_t>(size - position, 0, static_cast<std::int64_t>(content.size()));
    std::vector<std::uint8_t> older(static_cast<std::size_t>(length));
    bool failed = size < 0 || !m_file.Seek(position);
    return !failed && m_file.Read(older, failed) == older.size() && m_journal->Add(position, older, content);
}

/// Writes the collected sectors, after what they replace is on the disk.
bool CUpdateFile::ApplyAll() {
    std::map<std::int64_t, std::vector<std::uint8_t>> runs;
    std::vector<std::uint8_t>* run = nullptr;
    std::int64_t next = -1;
    for (const auto& [sector, content] : m_collected) {
        run = sector == next ? run : &runs[sector * kSector];
        run->insert(run->end(), content.begin(), content.end());
        next = content.size() == kDiskSector ? sector + 1 : -1;
    }
    if (!m_journal->IsBegun() && !m_journal->Create(m_oldSize)) {
        return false;
    }
    const auto isJournaled = [this](const auto& part) { return AddToJournal(part.first, part.second); };
    const auto isWritten = [this](const auto& part) {
        return m_file.Seek(part.first) && m_file.Write(part.second) == part.second.size();
    };
    return std::all_of(runs.begin(), runs.end(), isJournaled) && m_journal->Flush() &&
           std::all_of(runs.begin(), runs.end(), isWritten);
}

bool CUpdateFile::Apply() {
    if (m_collected.empty()) {
        return true;
    }
    const bool applied = ApplyAll();
    m_collected.clear();
    return applied || NoteWriteFailure();
}

bool CUpdateFile::Write(std::span<const std::uint8_t> bytes) {
    if (CanUndo()) {
        return Collect(bytes);
    }
    const std::size_t written = m_file.Write(bytes);
    m_position += static_cast<std::int64_t>(written);
    return written == bytes.size() || NoteWriteFailure();
}

void CUpdateFile::Undo() {
    m_collected.clear();
    if (CanUndo() && m_file.IsOpen() && m_journal->IsBegun() && m_journal->Undo(m_file)) {
        m_journal->Remove();
    }
    m_journal.reset();
    m_file.Close();
}

/// Writes everything to the disk before the journal disappears.
bool CUpdateFile::CommitChange() {
    if (!m_writeProblem.empty() || !Apply()) {
        return false;
    }
    const bool isChanged = m_journal->IsBegun();
    return !isChanged ||
           ((m_file.FlushToDisk() && m_file.CompleteWrites() && m_journal->Remove()) || NoteWriteFailure());
}

bool CUpdateFile::Commit() {
    if (CanUndo() && !CommitChange()) {
        Undo();
        return false;
    }
    if (!m_file.Close() && !CanUndo()) {  // what can be undone is on the disk
        NoteWriteFailure();
    }
    m_journal.reset();
    return m_writeProblem.empty();
}

}  // namespace vantrel
