// Buffered reading of a file, sequentially or by position.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "files/native_file.h"

namespace vantrel {

class CInputFile : public CByteSource {
public:
    /// Opens an existing file. On failure, returns false with LastFileError() set.
    bool Open(const std::string& path, ESharing sharing = ESharing::Anyone);
    /// Reads `source`, the content of the file `path`, as if it were a file. It must outlive this object.
    void Attach(CByteSource& source, const std::string& path);
    bool IsOpen() const { return m_file.IsOpen(); }
    const std::string& Path() const { return m_path; }
    void Close();
    /// Detaches the file without closing it: it stays open until the program ends.
    void LeaveOpen() { m_file.LeaveOpen(); }

    /// Length in bytes, −1 if unknown.
    std::int64_t Size() const override;
    std::int64_t Position() const { return m_position; }

    /// Moves to a byte position from the start. Returns false for a negative position and ignores it.
    bool Seek(std::int64_t position);

    /// Reads at the current position and advances it. Returns the number of bytes read: fewer than the buffer holds
    /// only at the end of the file or after an error. The rest of the buffer is unchanged.
    std::size_t Read(std::span<std::uint8_t> buffer);

    /// Seek and Read in one call; returns 0 for a negative position.
    std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) override;
    const std::string& ReadProblem() const override { return m_problem; }
    std::uint32_t PieceUnit() const override { return m_source != nullptr ? m_source->PieceUnit() : 1; }
    std::unique_ptr<CSourcePiece> NewPiece(std::size_t size) override;
    CInputFile* PlainFile() override { return m_source != nullptr ? m_source->PlainFile() : this; }

    /// Copies from a byte position to the current position of `target`; see CNativeFile::CopyFrom.
    std::size_t CopyTo(CNativeFile& target, std::int64_t position, std::size_t length);

    /// Whether reading or measuring has failed since Open. The end of the file is not an error.
    bool HasFailed() const { return !m_problem.empty(); }
    /// The first such error as a text with the path and the cause; empty if there was none.
    const std::string& Problem() const { return m_problem; }

private:
    bool MoveToPosition();
    bool FillBuffer();
    std::size_t ReadFile(std::span<std::uint8_t> buffer);
    void NoteFailure() const;

    CNativeFile m_file;
    CByteSource* m_source = nullptr;  ///< Read instead of the file.
    std::string m_path;
    std::vector<std::uint8_t> m_buffer;
    std::int64_t m_bufferStart = 0;
    std::size_t m_bufferLength = 0;
    std::int64_t m_position = 0;
    std::int64_t m_filePosition = 0;
    mutable std::string m_problem;
};

}  // namespace vantrel
