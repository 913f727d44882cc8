#include "compress/cso_reader.h"

#include <algorithm>
#include <bit>

#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::uint32_t kPositionMask = ~kCsoPlainBlock;
/// Larger blocks count as a failed allocation, so that a header alone cannot make the program use that much memory.
/// Real files have blocks of 2 KiB; a few have up to 64 KiB.
constexpr std::uint32_t kLargestBlockSize = 1U << 20U;
constexpr std::uint8_t kLargestVersion = 1;
constexpr std::uint8_t kLargestShift = 31;

/// Why a strict reader refuses a header; empty if it accepts it.
std::string UnsupportedIn(const CsoHeader& header) {
    if (header.version > kLargestVersion) {
        return Format("CSO version %u is not supported", unsigned{header.version});
    }
    if (header.block_size < kSectorSize || header.block_size > kLargestBlockSize ||
        !std::has_single_bit(header.block_size)) {
        return Format("CSO block size %u is not supported: it is not a power of two from 2048 to 1048576",
                      header.block_size);
    }
    if (header.align > kLargestShift) {
        return Format("CSO index shift %u is not supported: it is above 31", unsigned{header.align});
    }
    return {};
}

}  // namespace

ECsoFault CCsoReader::ReadHeader() {
    std::array<std::uint8_t, CsoHeader::kSize> bytes = {};
    if (m_file.ReadAt(0, bytes) != bytes.size()) {
        return ECsoFault::ShortHeader;
    }
    m_header = CsoHeader::Decode(bytes);
    if (m_header.magic != CsoHeader().magic || m_header.block_size == 0 || m_header.total_bytes == 0) {
        return ECsoFault::Format;
    }
    m_unsupported = m_strict ? UnsupportedIn(m_header) : std::string();
    m_blockCount = m_strict ? m_header.BlockCount() : m_header.WholeBlockCount();
    return m_unsupported.empty() ? ECsoFault::None : ECsoFault::Unsupported;
}

ECsoFault CCsoReader::ReadIndex() {
    const std::int64_t room = m_file.Size() - static_cast<std::int64_t>(CsoHeader::kSize);
    if (BlockCount() >= static_cast<std::uint64_t>(std::max<std::int64_t>(room, 0)) / sizeof(std::uint32_t)) {
        return ECsoFault::Index;
    }
    if (m_header.block_size > kLargestBlockSize || !m_index.Allocate(BlockCount() + 1) ||
        !m_slot.Allocate(BlockSizes(), 1)) {
        return ECsoFault::Memory;
    }
    const std::span index = m_index.Bytes();
    if (m_file.ReadAt(CsoHeader::kSize, index) != index.size()) {
        return ECsoFault::Index;
    }
    FindMissingBytes();
    return ECsoFault::None;
}

/// Some writers leave out a partial last block, and its index entry too: the first block then begins where that entry
/// would end the index.
void CCsoReader::FindMissingBytes() {
    const std::uint64_t shortIndexEnd = CsoHeader::kSize + (m_header.WholeBlockCount() + 1) * sizeof(std::uint32_t);
    if (m_blockCount > m_header.WholeBlockCount() && Shifted(Entry(0) & kPositionMask) == shortIndexEnd) {
        m_blockCount = m_header.WholeBlockCount();
        m_missingBytes = m_header.total_bytes % m_header.block_size;
    }
}

ECsoFault CCsoReader::ReadBlock(std::uint64_t block, std::span<const std::uint8_t>& content) {
    m_slot.ReadContainer(*this, block, 1);
    m_slot.Inflate(m_stream);
    const SBlock& expanded = m_slot.Blocks().front();
    content = ContentOf(block, expanded);
    return FaultOf(block, expanded);
}

bool CCsoReader::ReadStored(std::uint64_t number, std::span<std::uint8_t> buffer, SBlock& block) {
    block.isPlain = IsPlain(number);
    const std::uint64_t size = StoredSize(number, buffer.size());
    if (size > buffer.size()) {
        return false;
    }
    const auto bytes = buffer.first(static_cast<std::size_t>(size));
    if (m_file.ReadAt(Position(number), bytes) != bytes.size()) {
        return false;
    }
    block.stored = bytes;
    return true;
}

/// Bytes to read for a block. A plain block has the size of its content, whatever the next entry says. The padding
/// behind a stream that the shift causes may exceed the buffer; a strict reader leaves out what does.
std::uint64_t CCsoReader::StoredSize(std::uint64_t block, std::size_t room) const {
    if (IsPlain(block)) {
        return m_header.ContentSize(block);
    }
    const std::uint64_t size = Shifted((Entry(block + 1) & kPositionMask) - (Entry(block) & kPositionMask));
    const bool isPadding = m_strict && size > room && size - room < Shifted(1);
    return isPadding ? room : size;
}

std::int64_t CCsoReader::Position(std::uint64_t block) const {
    const std::uint64_t position = Shifted(Entry(block) & kPositionMask);
    return m_strict ? static_cast<std::int64_t>(position)
                    : static_cast<std::int32_t>(static_cast<std::uint32_t>(position));
}

/// An index value in bytes. A shift by 32 or more yields 0.
std::uint64_t CCsoReader::Shifted(std::uint32_t value) const {
    return m_header.align < 32 ? static_cast<std::uint64_t>(value) << m_header.align : 0;
}

std::span<const std::uint8_t> CCsoReader::ContentOf(std::uint64_t number, const SBlock& block) const {
    return block.content.first(std::min(block.content.size(), m_header.ContentSize(number)));
}

ECsoFault CCsoReader::FaultOf(std::uint64_t number, const SBlock& block) const {
    if (block.isUnreadable) {
        return ECsoFault::Read;
    }
    if (block.outcome.FailedIn(EStreamStep::Begin)) {
        return ECsoFault::InflateBegin;
    }
    if (block.outcome.FailedIn(EStreamStep::Work)) {
        return ECsoFault::Inflate;
    }
    if (block.content.size() != m_header.ContentSize(number) && block.content.size() != m_header.block_size) {
        return ECsoFault::WrongBlockSize;
    }
    return block.outcome.failedStep ? ECsoFault::InflateEnd : ECsoFault::None;
}

}  // namespace vantrel
