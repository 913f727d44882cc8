// A CSO file read block by block, for whoever wants the image in it. What is wrong with a file is told as a kind of
// fault; the texts belong to the callers.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "compress/buffer.h"
#include "compress/cso_header.h"
#include "files/input_file.h"

namespace vantrel {

enum class ECsoFault {
    None,
    ShortHeader,     ///< fewer than 24 bytes
    Format,          ///< wrong magic, or a block size or length of zero
    Memory,          ///< the buffers cannot be had, or the header claims blocks too large to be true
    Index,           ///< the index does not fit the file or cannot be read
    Read,            ///< the stored bytes of a block are not there, or are more than twice a block
    InflateBegin,    ///< zlib refused the stream; ZlibMessage() says why
    Inflate,         ///< the stored bytes are no complete stream of at most a block; ZlibMessage() says why
    WrongBlockSize,  ///< the stream expands to fewer bytes than a block; Produced() says how many
    InflateEnd       ///< zlib found the stream inconsistent when it was ended; ZlibMessage() says why
};

/// Call Open, ReadHeader and ReadIndex in this order, then ReadBlock in any order, each only after its predecessor
/// succeeded.
class CCsoReader {
public:
    /// False, with LastFileError() set, when the file cannot be opened.
    bool Open(const std::string& path) { return m_file.Open(path); }

    ECsoFault ReadHeader();
    ECsoFault ReadIndex();

    /// The content of a block (from 0), which stays valid until the next call.
    ECsoFault ReadBlock(std::uint64_t block, std::span<const std::uint8_t>& content);

    const CsoHeader& Header() const { return m_header; }
    /// Whole blocks; also the number of the index entry that ends the data.
    std::uint64_t BlockCount() const { return m_blockCount; }
    /// An entry of the index, from 0 to BlockCount().
    std::uint32_t Entry(std::uint64_t block) const;
    bool IsPlain(std::uint64_t block) const { return (Entry(block) & kCsoPlainBlock) != 0; }
    std::int64_t FileSize() const { return m_file.Size(); }

    const std::string& ZlibMessage() const { return m_zlibMessage; }
    std::uint32_t Produced() const { return m_produced; }

private:
    ECsoFault ReadStored(std::uint64_t block, std::span<const std::uint8_t>& stored);
    ECsoFault Inflate(std::span<const std::uint8_t> stored, std::span<const std::uint8_t>& content);
    std::uint64_t Shifted(std::uint32_t quantity) const;

    CInputFile m_file;
    CsoHeader m_header;
    std::uint64_t m_blockCount = 0;
    Buffer m_index;
    Buffer m_block;
    Buffer m_stored;
    std::string m_zlibMessage;
    std::uint32_t m_produced = 0;
};

}  // namespace vantrel
