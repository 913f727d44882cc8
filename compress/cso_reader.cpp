#include "compress/cso_reader.h"

#include <algorithm>
#include <bit>

#include "operation/text.h"

namespace vantrel {

namespace {

/// Larger blocks count as a failed allocation, so that a header alone cannot make the program use that much memory.
/// Real files have blocks of 2 KiB; a few have up to 64 KiB.
constexpr std::uint32_t kLargestBlockSize = 1U << 20U;
constexpr std::uint8_t kLargestShift = 31;
constexpr std::uint8_t kZsoVersion = 1;

/// CSO 2 and ZSO fix fields that CSO 1 leaves to the writer.
bool HasStrictFields(const CsoHeader& header) {
    return header.IsZso() || header.version == kCsoVersionWithLz4;
}

/// Why a strict reader refuses a header; empty if it accepts it.
std::string RefusalOf(const CsoHeader& header) {
    const char* const form = header.FormName();
    if (header.IsZso() ? header.version != kZsoVersion : header.version > kCsoVersionWithLz4) {
        return Format("%s version %u is not supported", form, unsigned{header.version});
    }
    if (header.block_size < kSectorSize || header.block_size > kLargestBlockSize ||
        !std::has_single_bit(header.block_size)) {
        return Format("%s block size %u is not supported: it is not a power of two from 2048 to 1048576", form,
                      header.block_size);
    }
    if (header.align > kLargestShift) {
        return Format("%s index shift %u is not supported: it is above 31", form, unsigned{header.align});
    }
    if (header.total_bytes == 0) {
        return Format("%s image size 0 is not supported", form);
    }
    if (HasStrictFields(header) && header.header_size != CsoHeader::kSize) {
        return Format("%s header size %u is not supported in version %u: it is not 24", form, header.header_size,
                      unsigned{header.version});
    }
    if (HasStrictFields(header) && (header.reserved[0] != 0 || header.reserved[1] != 0)) {
        return Format("%s unused header bytes %02X %02X are not supported in version %u: they are not zero", form,
                      unsigned{header.reserved[0]}, unsigned{header.reserved[1]}, unsigned{header.version});
    }
    return {};
}

}  // namespace

ECsoFault CCsoReader::ReadHeader() {
    std::array<std::uint8_t, CsoHeader::kSize> bytes = {};
    if (m_file.ReadAt(0, bytes) != bytes.size()) {
        return Refuse(ECsoFault::ShortHeader,
                      Format("%s header is incomplete: the file has %lld bytes", m_magic == kZsoMagic ? "ZSO" : "CSO",
                             static_cast<long long>(m_file.Size())));
    }
    m_header = CsoHeader::Decode(bytes);
    if (m_header.magic != m_magic) {
        return ECsoFault::Format;
    }
    m_refusal = m_strict ? RefusalOf(m_header) : std::string();
    if (!m_refusal.empty()) {
        return ECsoFault::Unsupported;
    }
    if (m_header.block_size == 0 || m_header.total_bytes == 0) {
        return ECsoFault::Format;
    }
    m_blockCount = m_strict ? m_header.BlockCount() : m_header.WholeBlockCount();
    return ECsoFault::None;
}

/// Keeps the reason for a strict reader.
ECsoFault CCsoReader::Refuse(ECsoFault fault, const std::string& reason) {
    m_refusal = m_strict ? reason : std::string();
    return fault;
}

ECsoFault CCsoReader::ReadIndex() {
    const std::int64_t room = m_file.Size() - static_cast<std::int64_t>(CsoHeader::kSize);
    if (BlockCount() >= static_cast<std::uint64_t>(std::max<std::int64_t>(room, 0)) / sizeof(std::uint32_t)) {
        return Refuse(ECsoFault::Index,
                      Format("%s image size %llu is not supported: the index of its blocks does not fit the file",
                             m_header.FormName(), static_cast<unsigned long long>(m_header.total_bytes)));
    }
    if (m_header.block_size > kLargestBlockSize || !m_index.Allocate(BlockCount() + 1)) {
        return ECsoFault::Memory;
    }
    const std::span index = m_index.Bytes();
    if (m_file.ReadAt(CsoHeader::kSize, index) != index.size()) {
        return ECsoFault::Index;
    }
    if (HasLz4Flags() && (Entry(m_blockCount) & kCsoMarkedBlock) != 0) {
        return Refuse(ECsoFault::Unsupported,
                      Format("CSO index entry %08X is not supported at the end of version 2: its high bit is set",
                             Entry(m_blockCount)));
    }
    FindMissingBytes();
    return ECsoFault::None;
}

/// Some writers leave out a partial last block, and its index entry too: the first block then begins where that entry
/// would end the index.
void CCsoReader::FindMissingBytes() {
    const std::uint64_t shortIndexEnd = CsoHeader::kSize + (m_header.WholeBlockCount() + 1) * sizeof(std::uint32_t);
    if (m_blockCount > m_header.WholeBlockCount() && !HasLz4Flags() &&
        Shifted(Entry(0) & kCsoPositionMask) == shortIndexEnd) {
        m_blockCount = m_header.WholeBlockCount();
        m_missingBytes = m_header.total_bytes % m_header.block_size;
    }
}

bool CCsoReader::ReadStored(std::uint64_t number, std::span<std::uint8_t> buffer, SBlock& block) {
    block.storedAs = StoredAs(number);
    block.imageSize = m_header.ContentSize(number);
    const std::uint64_t size = StoredSize(number, buffer.size());
    if (size > buffer.size() || (m_strict && GoesBackwards(number))) {
        return false;
    }
    const auto bytes = buffer.first(static_cast<std::size_t>(size));
    if (m_file.ReadAt(Position(number), bytes) != bytes.size()) {
        return false;
    }
    block.stored = bytes;
    return true;
}

EStoredAs CCsoReader::StoredAs(std::uint64_t block) const {
    const bool isMarked = (Entry(block) & kCsoMarkedBlock) != 0;
    if (HasLz4Flags()) {
        const bool isPlain = Distance(block) >= m_header.block_size && !GoesBackwards(block);
        return isPlain ? EStoredAs::Plain : isMarked ? EStoredAs::Lz4 : EStoredAs::Stream;
    }
    return isMarked ? EStoredAs::Plain : m_header.IsZso() ? EStoredAs::Lz4 : EStoredAs::Stream;
}

bool CCsoReader::GoesBackwards(std::uint64_t block) const {
    return (Entry(block + 1) & kCsoPositionMask) < (Entry(block) & kCsoPositionMask);
}

/// Bytes from a block to the next one, more than any file has if positions go backwards.
std::uint64_t CCsoReader::Distance(std::uint64_t block) const {
    return Shifted((Entry(block + 1) & kCsoPositionMask) - (Entry(block) & kCsoPositionMask));
}

/// Bytes to read for a block. A plain block has the size of its content, whatever the next entry says. The padding
/// behind a stream that the shift causes may exceed the buffer; a strict reader leaves out what does.
std::uint64_t CCsoReader::StoredSize(std::uint64_t block, std::size_t room) const {
    if (StoredAs(block) == EStoredAs::Plain) {
        return m_header.ContentSize(block);
    }
    const std::uint64_t size = Distance(block);
    const bool isPadding = m_strict && size > room && size - room < Shifted(1);
    return isPadding ? room : size;
}

std::int64_t CCsoReader::Position(std::uint64_t block) const {
    const std::uint64_t position = Shifted(Entry(block) & kCsoPositionMask);
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
