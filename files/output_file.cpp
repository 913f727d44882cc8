#include "files/output_file.h"

#include <algorithm>
#include <array>

#include "files/path.h"
#include "files/temporary_path.h"

namespace vantrel {

namespace {

constexpr std::size_t kPendingLimit = 262'144;
/// Writes of at least this size bypass the buffer to save a copy.
constexpr std::size_t kDirectWrite = 65'536;
constexpr std::int64_t kShortestHole = 65'536;
constexpr int kTemporaryNameTries = 100;

}  // namespace

COutputFile::~COutputFile() {
    Abandon();
}

void COutputFile::Begin(const std::string& path, EOutputManner manner, ESharing sharing) {
    Abandon();
    m_manner = manner;
    m_sharing = sharing;
    m_targetPath = Replaces(manner) ? ResolveLink(path) : path;
    m_flushes = IsFlushed(manner) || (Replaces(manner) && FileKindOf(m_targetPath) != EFileKind::Missing);
    m_problem.clear();
    m_position = 0;
    m_writtenEnd = 0;
    m_isFinished = false;
    m_isPlaced = false;
}

/// Takes the permissions of the file that is replaced, as far as possible.
void COutputFile::TakeMode() {
    if (Replaces(m_manner)) {
        m_file.TakeModeOf(m_targetPath);
    }
}

bool COutputFile::OpenTemporary() {
    for (int attempt = 0; attempt < kTemporaryNameTries; ++attempt) {
        m_temporaryPath = TemporaryPathIn(FolderOf(m_targetPath));
        if (m_file.OpenTemporary(m_temporaryPath, m_sharing)) {
            return true;
        }
        if (FileKindOf(m_temporaryPath) == EFileKind::Missing) {
            break;
        }
    }
    m_temporaryPath.clear();
    return false;
}

bool COutputFile::Open(const std::string& path, EOutputManner manner, ESharing sharing) {
    Begin(path, manner, sharing);
    if (manner == EOutputManner::InPlace) {
        return m_file.Open(path, EOpenMode::CreateTruncate, sharing);
    }
    if (!OpenTemporary()) {
        return false;
    }
    TakeMode();
    return true;
}

bool COutputFile::OpenAt(const std::string& place, const std::string& path, EOutputManner manner) {
    Begin(path, manner, ESharing::Anyone);
    if (!m_file.Open(place, EOpenMode::CreateNew, ESharing::Anyone)) {
        return false;
    }
    m_isPlaced = true;
    m_temporaryPath = place;
    TakeMode();
    return true;
}

bool COutputFile::NoteFailure() {
    if (m_problem.empty()) {
        m_problem = "Cannot write " + m_targetPath + ": " + LastFileError();
    }
    return false;
}

bool COutputFile::Flush() {
    if (m_pending.empty()) {
        return true;
    }
    const bool written = m_file.Write(m_pending) == m_pending.size();
    m_pending.clear();
    return written || NoteFailure();
}

bool COutputFile::PlaceZeros() {
    const std::int64_t count = m_unplacedZeros;
    m_unplacedZeros = 0;
    if (count < kShortestHole) {
        m_pending.insert(m_pending.end(), static_cast<std::size_t>(count), 0);
        return true;
    }
    return Flush() && (m_file.Seek(m_position) || NoteFailure());
}

void COutputFile::MoveOn(std::size_t count) {
    m_position += static_cast<std::int64_t>(count);
    m_writtenEnd = std::max(m_writtenEnd, m_position);
}

bool COutputFile::Write(std::span<const std::uint8_t> bytes) {
    if (!PlaceZeros()) {
        return false;
    }
    MoveOn(bytes.size());
    if (m_manner == EOutputManner::InPlace) {
        return m_file.Write(bytes) == bytes.size() || NoteFailure();
    }
    if (bytes.size() >= kDirectWrite) {
        return Flush() && (m_file.Write(bytes) == bytes.size() || NoteFailure());
    }
    m_pending.insert(m_pending.end(), bytes.begin(), bytes.end());
    return m_pending.size() < kPendingLimit || Flush();
}

std::size_t COutputFile::CopyWithinSystem(CByteSource& source, std::int64_t position, std::size_t length) {
    CInputFile* const file = source.PlainFile();
    const bool isWorthIt = m_manner != EOutputManner::InPlace && length >= kDirectWrite;
    if (file == nullptr || !isWorthIt || !PlaceZeros() || !Flush()) {
        return 0;
    }
    const std::size_t count = file->CopyTo(m_file, position, length);
    MoveOn(count);
    return count;
}

std::size_t COutputFile::Copy(CByteSource& source, std::int64_t position, std::span<std::uint8_t> buffer) {
    const std::size_t copied = CopyWithinSystem(source, position, buffer.size());
    const auto rest = buffer.subspan(copied);
    const std::size_t count = source.ReadAt(position + static_cast<std::int64_t>(copied), rest);
    Write(rest.first(count));
    return copied + count;
}

bool COutputFile::WriteZeros(std::int64_t count) {
    static constexpr std::array<std::uint8_t, 2048> kZeros = {};
    if (m_manner != EOutputManner::InPlace && m_position == m_writtenEnd && count > 0) {
        m_unplacedZeros += count;
        m_position += count;
        m_writtenEnd = m_position;
        return true;
    }
    bool written = true;
    while (count > 0 && written) {
        const auto piece = static_cast<std::size_t>(std::min<std::int64_t>(count, kZeros.size()));
        written = Write(std::span(kZeros).first(piece));
        count -= static_cast<std::int64_t>(piece);
    }
    return written;
}

bool COutputFile::Seek(std::int64_t position) {
    if (position == m_position) {
        return true;
    }
    m_unplacedZeros = 0;  // Finish sets the length
    if (!Flush() || !m_file.Seek(position)) {
        return NoteFailure();
    }
    m_position = position;
    return true;
}

bool COutputFile::Reopen() {
    if (m_manner != EOutputManner::InPlace) {
        return Seek(0);
    }
    m_position = 0;
    if (!m_file.Close()) {
        return NoteFailure();
    }
    return m_file.Open(m_targetPath, EOpenMode::ReadWrite, m_sharing);
}

std::int64_t COutputFile::Size() const {
    return m_writtenEnd;
}

/// Extends a transactional output by zeros at its end that were not written.
bool COutputFile::ReachEnd() {
    if (m_manner == EOutputManner::InPlace) {
        return true;
    }
    const std::int64_t size = m_file.Size();
    return size >= m_writtenEnd || (size >= 0 && m_file.Resize(m_writtenEnd));
}

bool COutputFile::Finish() {
    if (m_file.IsOpen() && !m_isFinished) {
        const bool hasName = m_manner == EOutputManner::InPlace || m_isPlaced;
        if (!Flush() || !ReachEnd() || (m_flushes && !m_file.FlushToDisk()) ||
            !(hasName ? m_file.Close() : m_file.CompleteWrites())) {
            NoteFailure();
        }
        m_unplacedZeros = 0;
        m_isFinished = true;
    }
    return m_problem.empty();
}

std::string COutputFile::PathToRead() {
    std::string path = m_temporaryPath.empty() ? m_targetPath : m_file.PathToRead(m_temporaryPath);
    if (path.empty()) {
        NoteFailure();
    }
    return path;
}

bool COutputFile::Commit() {
    const bool isNew = m_flushes && FileKindOf(m_targetPath) == EFileKind::Missing;
    if (!CommitAs(m_targetPath, Replaces(m_manner))) {
        return false;
    }
    // If the flush fails after a file was replaced, a power cut may bring the older one back, which is no loss.
    if (!m_flushes || FlushFolder(FolderOf(m_targetPath)) || !isNew) {
        return true;
    }
    NoteFailure();
    RemoveFile(m_targetPath);
    return false;
}

bool COutputFile::CommitAs(const std::string& path) {
    return CommitAs(path, false);
}

bool COutputFile::CommitAs(const std::string& path, bool replace) {
    const bool finished = Finish();
    if (finished && (m_temporaryPath.empty() || path == m_temporaryPath)) {
        m_temporaryPath.clear();
        return true;
    }
    if (finished && (m_file.GiveName(m_temporaryPath, path, replace) || NoteFailure())) {
        m_temporaryPath.clear();
        m_file.Close();
        return true;
    }
    Abandon();
    return false;
}

void COutputFile::Abandon() {
    m_pending.clear();
    m_unplacedZeros = 0;
    const bool stays = !m_temporaryPath.empty() && (m_isPlaced || m_file.StaysWhenClosed());
    m_file.Close();
    if (stays) {
        RemoveTemporary(m_temporaryPath);
    }
    m_temporaryPath.clear();
}

void COutputFile::LeaveOpen() {
    if (m_manner == EOutputManner::InPlace) {
        m_file.LeaveOpen();
    }
}

}  // namespace vantrel
