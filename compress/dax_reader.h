// Reads the image in a DAX file frame by frame. Reports kinds of faults; the texts for them belong to the callers.
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
    Header,  ///< fewer than 32 bytes, or wrong magic
    Tables,  ///< the tables do not fit the file or cannot be read
    Memory,  ///< allocation fails
    Read,    ///< the stored bytes of a frame cannot be read, or are more than a frame ever takes
    Inflate  ///< the stored bytes are not a complete zlib stream of at most a frame
};

/// Call Open, ReadHeader and ReadTables in this order, each only if the one before succeeded. Then frames can be read
/// in any order: expanded with ReadFrame, or as stored with ReadStored.
class CDaxReader : public CStoredBlocks {
public:
    /// Returns false, with LastFileError() set, if the file cannot be opened. While it is open, other programs may read
    /// it but not write it.
    bool Open(const std::string& path) { return m_file.Open(path, ESharing::Readers); }
    void Close() { m_file.Close(); }
    /// Releases the file without closing it: it stays open until the program ends.
    void LeaveOpen() { m_file.LeaveOpen(); }

    EDaxFault ReadHeader();
    EDaxFault ReadTables();

    /// Expands a frame (from 0) to at most 8192 bytes. `content` is valid until the next call.
    EDaxFault ReadFrame(std::uint32_t frame, std::span<const std::uint8_t>& content);

    bool ReadStored(std::uint64_t number, std::span<std::uint8_t> buffer, SBlock& frame) override;
    /// The fault of a frame after it was inflated.
    static EDaxFault FaultOf(const SBlock& frame);

    const DaxHeader& Header() const { return m_header; }
    std::uint32_t FrameCount() const { return m_header.FrameCount(); }
    /// Position and length of a frame's stored bytes, as in the tables.
    std::uint32_t Position(std::uint32_t frame) const { return m_positions.Get(frame); }
    std::uint16_t Length(std::uint32_t frame) const { return m_lengths.Get(frame); }
    std::int64_t FileSize() const { return m_file.Size(); }
    /// The first read error as a text with the path and the cause; empty if there was none.
    const std::string& Problem() const { return m_file.Problem(); }

private:
    template <typename Number>
    EDaxFault ReadTable(CNumberTable<Number>& table);

    CInputFile m_file;
    DaxHeader m_header;
    CNumberTable<std::uint32_t> m_positions;
    CNumberTable<std::uint16_t> m_lengths;
    CBlockSlot m_slot;
    CBlockStream m_stream{{EStreamForm::Zlib, std::nullopt}, EStreamUse::Reused};
};

}  // namespace vantrel
