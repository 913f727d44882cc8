// Reads the stored blocks of a CSO or ZSO file. Reports kinds of faults; the texts for them belong to the
// callers.
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
    Unsupported,     ///< a field whose value a strict reader refuses; see Refusal
    Memory,          ///< allocation fails, or the header claims implausibly large blocks
    Index,           ///< the index does not fit the file or cannot be read
    Read,            ///< the stored bytes of a block cannot be read, are more than twice a block, or go backwards
    InflateBegin,    ///< inflateInit fails
    Inflate,         ///< the stored bytes are no complete deflate stream or LZ4 block of at most a block
    WrongBlockSize,  ///< the stream expands to fewer bytes than the block has
    InflateEnd       ///< inflateEnd fails
};

/// Call Open, ReadHeader and ReadIndex in this order, each only if the one before succeeded. Then blocks can be read in
/// any order.
///
/// A strict reader reads every byte of the image and refuses headers that it does not understand. Any other one reads
/// whole blocks only, ignores the version, and takes positions as signed 32-bit numbers.
class CCsoReader : public CStoredBlocks {
public:
    explicit CCsoReader(bool strict, const CsoMagic& magic = kCsoMagic) : m_strict(strict), m_magic(magic) {}

    /// Returns false, with LastFileError() set, if the file cannot be opened.
    bool Open(const std::string& path) { return m_file.Open(path); }

    ECsoFault ReadHeader();
    ECsoFault ReadIndex();

    bool ReadStored(std::uint64_t number, std::span<std::uint8_t> buffer, SBlock& block) override;
    /// The fault of block `number` after it was inflated.
    ECsoFault FaultOf(std::uint64_t number, const SBlock& block) const;
    /// The image's bytes in block `number` after it was inflated, without the padding that some writers add to the
    /// last block.
    std::span<const std::uint8_t> ContentOf(std::uint64_t number, const SBlock& block) const;
    /// The path, and the field that a strict reader refuses, with its value; empty if header and index are accepted.
    std::string Refusal() const { return m_refusal.empty() ? m_refusal : m_file.Path() + ": " + m_refusal; }

    const CsoHeader& Header() const { return m_header; }
    SBlockSizes BlockSizes() const { return CsoBlockSizes(m_header.block_size); }
    /// Number of blocks, which is also the number of the index entry for the end of the data.
    std::uint64_t BlockCount() const { return m_blockCount; }
    /// Bytes at the end of the image that are not in the file, because its writer stored whole blocks only.
    std::uint64_t MissingBytes() const { return m_missingBytes; }
    /// An index entry, 0 to BlockCount().
    std::uint32_t Entry(std::uint64_t block) const { return m_index.Get(block); }
    EStoredAs StoredAs(std::uint64_t block) const;
    /// Where the data ends, according to the index.
    std::uint64_t DataEnd() const { return Shifted(Entry(m_blockCount) & kCsoPositionMask); }
    std::int64_t FileSize() const { return m_file.Size(); }
    /// The first read error as a text with the path and the cause; empty if there was none.
    const std::string& Problem() const { return m_file.Problem(); }

private:
    ECsoFault Refuse(ECsoFault fault, const std::string& reason);
    bool HasLz4Flags() const { return m_strict && m_header.version == kCsoVersionWithLz4; }
    std::uint64_t Shifted(std::uint32_t value) const;
    std::uint64_t Distance(std::uint64_t block) const;
    bool GoesBackwards(std::uint64_t block) const;
    std::uint64_t StoredSize(std::uint64_t block, std::size_t room) const;
    std::int64_t Position(std::uint64_t block) const;
    void FindMissingBytes();

    const bool m_strict;
    const CsoMagic m_magic;
    CInputFile m_file;
    CsoHeader m_header;
    std::string m_refusal;
    std::uint64_t m_blockCount = 0;
    std::uint64_t m_missingBytes = 0;
    CNumberTable<std::uint32_t> m_index;
};

}  // namespace vantrel
