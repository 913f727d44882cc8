// Reads the image in a CSO file block by block. Reports kinds of faults; the texts for them belong to the callers.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "compress/block_slot.h"
#include "compress/cso_header.h"
#include "compress/number_table.h"
#include "files/input_file.h"

namespace vantrel {

enum class ECsoFault {
    None,
    ShortHeader,     ///< fewer than 24 bytes
    Format,          ///< wrong magic, or a block size or length of zero
    Memory,          ///< allocation fails, or the header claims implausibly large blocks
    Index,           ///< the index does not fit the file or cannot be read
    Read,            ///< the stored bytes of a block cannot be read, or are more than twice a block
    InflateBegin,    ///< inflateInit fails
    Inflate,         ///< the stored bytes are not a complete deflate stream of at most a block
    WrongBlockSize,  ///< the stream expands to fewer bytes than a block
    InflateEnd       ///< inflateEnd fails
};

/// Call Open, ReadHeader and ReadIndex in this order, each only if the one before succeeded. Then blocks can be read in
/// any order: expanded with ReadBlock, or as stored with ReadStored.
class CCsoReader : public CStoredBlocks {
public:
    /// Returns false, with LastFileError() set, if the file cannot be opened.
    bool Open(const std::string& path) { return m_file.Open(path); }

    ECsoFault ReadHeader();
    ECsoFault ReadIndex();

    /// Expands a block (from 0). `content` is valid until the next call.
    ECsoFault ReadBlock(std::uint64_t block, std::span<const std::uint8_t>& content);

    bool ReadStored(std::uint64_t number, std::span<std::uint8_t> buffer, SBlock& block) override;
    /// The fault of a block of this container after it was inflated.
    ECsoFault FaultOf(const SBlock& block) const;

    const CsoHeader& Header() const { return m_header; }
    SBlockSizes BlockSizes() const { return {m_header.block_size, kCsoStoredRoom * m_header.block_size}; }
    /// Number of whole blocks, which is also the number of the index entry for the end of the data.
    std::uint64_t BlockCount() const { return m_header.BlockCount(); }
    /// An index entry, 0 to BlockCount().
    std::uint32_t Entry(std::uint64_t block) const { return m_index.Get(block); }
    bool IsPlain(std::uint64_t block) const { return (Entry(block) & kCsoPlainBlock) != 0; }
    std::int64_t FileSize() const { return m_file.Size(); }
    /// The first read error as a text with the path and the cause; empty if there was none.
    const std::string& Problem() const { return m_file.Problem(); }

private:
    std::uint64_t Shifted(std::uint32_t value) const;

    CInputFile m_file;
    CsoHeader m_header;
    CNumberTable<std::uint32_t> m_index;
    CBlockSlot m_slot;
    CBlockStream m_stream{{EStreamForm::Raw, std::nullopt}, EStreamUse::Reused};
};

}  // namespace vantrel
