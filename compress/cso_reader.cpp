#include "compress/cso_reader.h"

#include <algorithm>

namespace vantrel {

namespace {

constexpr std::uint32_t kPositionMask = ~kCsoPlainBlock;
/// Larger blocks count as a failed allocation, so that a header alone cannot make the program use that much memory.
/// Real files have blocks of 2 KiB; a few have up to 64 KiB.
constexpr std::uint32_t kLargestBlockSize = 1U << 20U;

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
    return ECsoFault::None;
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
    return m_file.ReadAt(CsoHeader::kSize, index) == index.size() ? ECsoFault::None : ECsoFault::Index;
}

ECsoFault CCsoReader::ReadBlock(std::uint64_t block, std::span<const std::uint8_t>& content) {
    m_slot.ReadContainer(*this, block, 1);
    m_slot.Inflate(m_stream);
    content = m_slot.Blocks().front().content;
    return FaultOf(m_slot.Blocks().front());
}

/// Positions are signed 32-bit numbers, so data beyond 2 GiB is out of reach. A plain block has the size of a block,
/// whatever the next entry says.
bool CCsoReader::ReadStored(std::uint64_t number, std::span<std::uint8_t> buffer, SBlock& block) {
    const std::uint32_t here = Entry(number) & kPositionMask;
    const std::uint32_t next = Entry(number + 1) & kPositionMask;
    block.isPlain = IsPlain(number);
    const std::uint64_t size = block.isPlain ? m_header.block_size : Shifted(next - here);
    if (size > buffer.size()) {
        return false;
    }
    const auto bytes = buffer.first(static_cast<std::size_t>(size));
    const auto position = static_cast<std::int32_t>(static_cast<std::uint32_t>(Shifted(here)));
    if (m_file.ReadAt(position, bytes) != bytes.size()) {
        return false;
    }
    block.stored = bytes;
    return true;
}

/// An index value in bytes. A shift by 32 or more yields 0.
std::uint64_t CCsoReader::Shifted(std::uint32_t value) const {
    return m_header.align < 32 ? static_cast<std::uint64_t>(value) << m_header.align : 0;
}

ECsoFault CCsoReader::FaultOf(const SBlock& block) const {
    if (block.isUnreadable) {
        return ECsoFault::Read;
    }
    if (block.outcome.FailedIn(EStreamStep::Begin)) {
        return ECsoFault::InflateBegin;
    }
    if (block.outcome.FailedIn(EStreamStep::Work)) {
        return ECsoFault::Inflate;
    }
    if (block.content.size() != m_header.block_size) {
        return ECsoFault::WrongBlockSize;
    }
    return block.outcome.failedStep ? ECsoFault::InflateEnd : ECsoFault::None;
}

}  // namespace vantrel
