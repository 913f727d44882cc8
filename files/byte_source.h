// Random read access to a sequence of bytes: a file, or the image inside a compressed file.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace vantrel {

class CInputFile;

/// A part of a source that is read in two steps, so that several threads can share the work: one loads what is stored,
/// in order, and others expand it. The room of both steps is the same: a whole number of the source's units.
class CSourcePiece {
public:
    virtual ~CSourcePiece() = default;

    /// Reads what is stored of the bytes from `position` on that fill `room`. Uses the source, so it must never run
    /// concurrently with another use of it.
    virtual void Load(std::int64_t position, std::span<std::uint8_t> room) = 0;

    /// Fills `room` and returns the number of bytes: fewer than the room holds only at the end of the source or before
    /// unreadable bytes. Several pieces of a source may expand concurrently.
    virtual std::size_t Expand(std::span<std::uint8_t> room) = 0;

    /// Why bytes are unreadable, as a text with the path; empty if none are.
    virtual std::string Problem() const = 0;
};

class CByteSource {
public:
    virtual ~CByteSource() = default;

    /// Length in bytes, −1 if unknown.
    virtual std::int64_t Size() const = 0;

    /// Reads from a byte position. Returns the number of bytes read: fewer than the buffer holds only at the end or
    /// after an error, 0 for a negative position. The rest of the buffer is unchanged.
    virtual std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) = 0;

    /// The first reason why a read ended early, as a text with the path; empty if there was none.
    virtual const std::string& ReadProblem() const;

    /// Bytes that are stored together. Positions and rooms of pieces are multiples of it.
    virtual std::uint32_t PieceUnit() const { return 1; }
    /// A piece that is loaded with at most `size` bytes; null if allocation fails. The source must outlive it.
    virtual std::unique_ptr<CSourcePiece> NewPiece(std::size_t size);

    /// The file that holds these bytes at the same positions; null if there is none.
    virtual CInputFile* PlainFile() { return nullptr; }
};

}  // namespace vantrel
