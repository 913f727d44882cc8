#include "files/input_file.h"

#include <algorithm>

namespace vantrel {

namespace {

constexpr std::size_t kBufferSize = 262'144;
/// Reads of at least this size bypass the buffer to save a copy.
constexpr std::size_t kDirectRead = 16'384;

}  // namespace

bool CInputFile::Open(const std::string& path, ESharing sharing) {
    Close();
    m_path = path;
    m_problem.clear();
    return m_file.Open(path, EOpenMode::Read, sharing);
}

void CInputFile::Attach(CByteSource& source, const std::string& path) {
    Close();
    m_path = path;
    m_problem.clear();
    m_source = &source;
}

void CInputFile::Close() {
    m_file.Close();
    m_source = nullptr;
    m_bufferStart = 0;
    m_bufferLength = 0;
    m_position = 0;
    m_filePosition = 0;
}

std::int64_t CInputFile::Size() const {
    if (m_source != nullptr) {
        return m_source->Size();
    }
    const std::int64_t size = m_file.Size();
    if (size < 0) {
        NoteFailure();
    }
    return size;
}

void CInputFile::NoteFailure() const {
    if (m_problem.empty()) {
        m_problem = "Cannot read " + m_path + ": " + LastFileError();
    }
}

/// Reads at the current position.
std::size_t CInputFile::ReadFile(std::span<std::uint8_t> buffer) {
    if (m_source != nullptr) {
        const std::size_t read = m_source->ReadAt(m_position, buffer);
        m_problem = m_source->ReadProblem();
        return read;
    }
    bool failed = false;
    const std::size_t count = m_file.Read(buffer, failed);
    if (failed) {
        NoteFailure();
    }
    return count;
}

bool CInputFile::Seek(std::int64_t position) {
    if (position < 0) {
        return false;
    }
    m_position = position;
    return true;
}

bool CInputFile::MoveToPosition() {
    if (m_source == nullptr && m_filePosition != m_position && !m_file.Seek(m_position)) {
        NoteFailure();
        return false;
    }
    return true;
}

bool CInputFile::FillBuffer() {
    if (!MoveToPosition()) {
        return false;
    }
    m_buffer.resize(kBufferSize);
    m_bufferStart = m_position;
    m_bufferLength = ReadFile(m_buffer);
    m_filePosition = m_position + static_cast<std::int64_t>(m_bufferLength);
    return m_bufferLength > 0;
}

std::size_t CInputFile::Read(std::span<std::uint8_t> buffer) {
    std::size_t done = 0;
    while (done < buffer.size()) {
        const std::int64_t offset = m_position - m_bufferStart;
        if (offset < 0 || offset >= static_cast<std::int64_t>(m_bufferLength)) {
            if (m_source != nullptr || buffer.size() - done >= kDirectRead) {
                if (!MoveToPosition()) {
                    break;
                }
                const std::size_t count = ReadFile(buffer.subspan(done));
                m_position += static_cast<std::int64_t>(count);
                m_filePosition = m_position;
                return done + count;
            }
            if (!FillBuffer()) {
                break;
            }
            continue;
        }
        const auto start = static_cast<std::size_t>(offset);
        const std::size_t count = std::min(buffer.size() - done, m_bufferLength - start);
        std::copy_n(m_buffer.begin() + static_cast<std::ptrdiff_t>(start), count,
                    buffer.begin() + static_cast<std::ptrdiff_t>(done));
        done += count;
        m_position += static_cast<std::int64_t>(count);
    }
    return done;
}

std::size_t CInputFile::ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) {
    return Seek(position) ? Read(buffer) : 0;
}

std::unique_ptr<CSourcePiece> CInputFile::NewPiece(std::size_t size) {
    return m_source != nullptr ? m_source->NewPiece(size) : CByteSource::NewPiece(size);
}

std::size_t CInputFile::CopyTo(CNativeFile& target, std::int64_t position, std::size_t length) {
    if (!Seek(position) || !MoveToPosition()) {
        return 0;
    }
    const std::size_t count = target.CopyFrom(m_file, length);
    m_position += static_cast<std::int64_t>(count);
    m_filePosition = m_position;
    return count;
}

}  // namespace vantrel
