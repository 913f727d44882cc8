// A DAX file read frame by frame, for whoever wants the image in it. What is wrong with a file is told as a kind of
// fault; the texts belong to the callers.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "compress/buffer.h"
#include "compress/dax_header.h"
#include "compress/inflated_piece.h"
#include "files/input_file.h"

namespace vantrel {

enum class EDaxFault {
    None,
    Header,  ///< fewer than 32 bytes, or wrong magic
    Tables,  ///< the tables do not fit the file or cannot be read
    Memory,  ///< the tables or the room for frames cannot be had
    Read,    ///< the stored bytes of a frame are not there, or are more than a frame can ever take
    Inflate  ///< the stored bytes are no complete zlib stream of at most a frame
};

/// Call Open, ReadHeader and ReadTables in this order, each only after its predecessor succeeded. Then the frames can
/// be had in any order: whole by ReadFrame, or in two steps by ReadStored and zlib.
class CDaxReader : public CStoredBlocks {
public:
    /// False, with LastFileError() set, when the file cannot be opened. Others may read it meanwhile but not write.
    bool Open(const std::string& path) { return m_file.Open(path, ESharing::Readers); }
    void Close() { m_file.Close(); }
    /// Lets go of the file without closing it.
    void LeaveOpen() { m_file.LeaveOpen(); }

    EDaxFault ReadHeader();
    EDaxFault ReadTables();

    /// The content of a frame (from 0), at most 8192 bytes, valid until the next call.
    EDaxFault ReadFrame(std::uint32_t frame, std::span<const std::uint8_t>& content);

    bool ReadStored(std::uint64_t frame, std::span<std::uint8_t> room, std::size_t& size, bool& plain) override;
    /// What is wrong with a frame that came from here.
    static EDaxFault FaultOf(const SInflatedBlock& frame);

    const DaxHeader& Header() const { return m_header; }
    std::uint32_t FrameCount() const { return m_header.FrameCount(); }
    /// Position and length of a frame's stored bytes, as the tables have them.
    std::uint32_t Position(std::uint32_t frame) const;
    std::uint16_t Length(std::uint32_t frame) const;
    std::int64_t FileSize() const { return m_file.Size(); }

private:
    EDaxFault ReadTable(std::uint32_t entrySize, Buffer& table);

    CInputFile m_file;
    DaxHeader m_header;
    Buffer m_positions;
    Buffer m_lengths;
    CInflatedPiece m_frame;
    CBlockInflater m_inflater{{EStreamForm::Zlib}, EStreamUse::Kept};
};

}  // namespace vantrel
