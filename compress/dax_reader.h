// Reads the stored frames of a DAX file. Reports kinds of faults; the texts for them belong to the callers.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "compress/block_slot.h"
#include "compress/dax_header.h"
#include "compress/number_table.h"
#include "files/input_file.h"

namespace vantrel {

enum class EDaxFault {
    None,
    Header,       ///< fewer than 32 bytes, or wrong magic
    Unsupported,  ///< a field whose value a strict reader refuses; see Refusal
    Tables,       ///< the tables do not fit the file, contradict the header or cannot be read
    Memory,       ///< allocation fails
    Read,         ///< the stored bytes of a frame cannot be read, or are more than a frame ever takes
    Inflate,      ///< the stored bytes are not a complete zlib stream of at most a frame
    Short         ///< a strict reader finds fewer bytes than the image has in the frame
};

/// Call Open, ReadHeader and ReadTables in this order, each only if the one before succeeded. Then frames can be read
/// in any order.
///
/// A strict reader believes the header: the image has exactly the size that it gives, and frames in the plain areas of
/// version 1 are no streams. Any other one takes every frame as a stream, of whatever length.
class CDaxReader : public CStoredBlocks {
public:
    explicit CDaxReader(bool strict) : m_strict(strict) {}

    /// Returns false, with LastFileError() set, if the file cannot be opened. While it is open, other programs may read
    /// it but not write it.
    bool Open(const std::string& path) { return m_file.Open(path, ESharing::Readers); }
    void Close() { m_file.Close(); }
    /// Releases the file without closing it: it stays open until the program ends.
    void LeaveOpen() { m_file.LeaveOpen(); }

    EDaxFault ReadHeader();
    EDaxFault ReadTables();

    bool ReadStored(std::uint64_t number, std::span<std::uint8_t> buffer, SBlock& frame) override;
    /// The fault of frame `number` after it was inflated.
    EDaxFault FaultOf(std::uint32_t number, const SBlock& frame) const;
    /// The image's bytes in frame `number` after it was inflated. A strict reader leaves out the padding that some
    /// writers add to the last frame.
    std::span<const std::uint8_t> ContentOf(std::uint32_t number, const SBlock& frame) const;
    /// The path, and the field that a strict reader refuses, with its value; empty if header and tables are accepted.
    std::string Refusal() const { return m_refusal.empty() ? m_refusal : m_file.Path() + ": " + m_refusal; }

    const DaxHeader& Header() const { return m_header; }
    std::uint32_t FrameCount() const { return m_header.FrameCount(); }
    /// Position and length of a frame's stored bytes, as in the tables.
    std::uint32_t Position(std::uint32_t frame) const { return m_positions.Get(frame); }
    std::uint16_t Length(std::uint32_t frame) const { return m_lengths.Get(frame); }
    bool IsPlain(std::uint32_t frame) const { return m_isPlain && m_isPlain[frame] != 0; }
    /// Plain areas in the file: 0 unless the reader is strict and the version has them.
    std::uint32_t AreaCount() const;
    std::int64_t FileSize() const { return m_file.Size(); }
    /// The first read error as a text with the path and the cause; empty if there was none.
    const std::string& Problem() const { return m_file.Problem(); }

private:
    EDaxFault Refuse(EDaxFault fault, const std::string& reason);
    template <typename Number>
    EDaxFault ReadTable(CNumberTable<Number>& table, std::uint32_t count);
    EDaxFault ReadAreas();

    const bool m_strict;
    CInputFile m_file;
    std::string m_refusal;
    DaxHeader m_header;
    CNumberTable<std::uint32_t> m_positions;
    CNumberTable<std::uint16_t> m_lengths;
    Buffer m_isPlain;  ///< A byte for each frame; null if there are no areas.
};

}  // namespace vantrel
