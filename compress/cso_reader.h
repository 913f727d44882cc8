// A CSO file read block by block, for whoever wants the image in it. What is wrong with a file is told as a kind of
// fault; the texts belong to the callers.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "compress/buffer.h"
#include "compress/cso_header.h"
#include "compress/inflated_piece.h"
#include "files/input_file.h"

namespace vantrel {

enum class ECsoFault {
    None,
    ShortHeader,     ///< fewer than 24 bytes
    Format,          ///< wrong magic, or a block size or length of zero
    Memory,          ///< the buffers cannot be had, or the header claims blocks too large to be true
    Index,           ///< the index does not fit the file or cannot be read
    Read,            ///< the stored bytes of a block are not there, or are more than twice a block
    InflateBegin,    ///< zlib refused the stream
    Inflate,         ///< the stored bytes are no complete stream of at most a block
    WrongBlockSize,  ///< the stream expands to fewer bytes than a block
    InflateEnd       ///< zlib found the stream inconsistent when it was ended
};

/// Call Open, ReadHeader and ReadIndex in this order, each only after its predecessor succeeded. Then the blocks can be
/// had in any order: whole by ReadBlock, or in two steps by ReadStored and zlib.
class CCsoReader : public CStoredBlocks {
public:
    /// False, with LastFileError() set, when the file cannot be opened.
    bool Open(const std::string& path) { return m_file.Open(path); }

    ECsoFault ReadHeader();
    ECsoFault ReadIndex();

    /// The content of a block (from 0), which stays valid until the next call.
    ECsoFault ReadBlock(std::uint64_t block, std::span<const std::uint8_t>& content);

    bool ReadStored(std::uint64_t block, std::span<std::uint8_t> room, std::size_t& size, bool& plain) override;
    /// What is wrong with a block that came from here.
    ECsoFault FaultOf(const SInflatedBlock& block) const;

    const CsoHeader& Header() const { return m_header; }
    SBlockSizes BlockSizes() const { return {m_header.block_size, kCsoStoredRoom * m_header.block_size}; }
    /// Whole blocks; also the number of the index entry that ends the data.
    std::uint64_t BlockCount() const { return m_blockCount; }
    /// An entry of the index, from 0 to BlockCount().
    std::uint32_t Entry(std::uint64_t block) const;
    bool IsPlain(std::uint64_t block) const { return (Entry(block) & kCsoPlainBlock) != 0; }
    std::int64_t FileSize() const { return m_file.Size(); }

private:
    std::uint64_t Shifted(std::uint32_t quantity) const;

    CInputFile m_file;
    CsoHeader m_header;
    std::uint64_t m_blockCount = 0;
    Buffer m_index;
    CInflatedPiece m_block;
    CBlockInflater m_inflater{{EStreamForm::Raw}, EStreamUse::Kept};
};

}  // namespace vantrel
