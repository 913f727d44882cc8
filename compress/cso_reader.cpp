#include "compress/cso_reader.h"

#include <algorithm>

#include "files/byte_order.h"

namespace vantrel {

namespace {

constexpr std::uint32_t kPositionMask = ~kCsoPlainBlock;
/// A header that claims larger blocks is answered like a failing allocation: its buffers would take memory by claim
/// alone. Real files have blocks of 2 KiB, a few of up to 64 KiB.
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
    m_blockCount = m_header.BlockCount();
    return ECsoFault::None;
}

ECsoFault CCsoReader::ReadIndex() {
    const std::int64_t room = m_file.Size() - static_cast<std::int64_t>(CsoHeader::kSize);
    if (m_blockCount >= static_cast<std::uint64_t>(std::max<std::int64_t>(room, 0)) / kCsoEntrySize) {
        return ECsoFault::Index;
    }
    if (m_header.block_size > kLargestBlockSize) {
        return ECsoFault::Memory;
    }
    const std::uint64_t indexSize = (m_blockCount + 1) * kCsoEntrySize;
    m_index = TryAllocate(indexSize);
    if (!m_index || !m_block.Allocate(BlockSizes(), 1)) {
        return ECsoFault::Memory;
    }
    const std::span index(m_index.get(), static_cast<std::size_t>(indexSize));
    return m_file.ReadAt(CsoHeader::kSize, index) == index.size() ? ECsoFault::None : ECsoFault::Index;
}

std::uint32_t CCsoReader::Entry(std::uint64_t block) const {
    return LoadLe32(std::span<const std::uint8_t, kCsoEntrySize>(m_index.get() + block * kCsoEntrySize, kCsoEntrySize));
}

ECsoFault CCsoReader::ReadBlock(std::uint64_t block, std::span<const std::uint8_t>& content) {
    m_block.Read(*this, block, 1);
    m_block.Make(m_inflater);
    content = m_block.Blocks().front().content;
    return FaultOf(m_block.Blocks().front());
}

/// Positions are 32-bit quantities with a sign; what lies beyond 2 GiB cannot be reached. A plain block is as long as a
/// block, whatever the next entry says.
bool CCsoReader::ReadStored(std::uint64_t block, std::span<std::uint8_t> room, std::size_t& size, bool& plain) {
    const std::uint32_t here = Entry(block) & kPositionMask;
    const std::uint32_t next = Entry(block + 1) & kPositionMask;
    plain = IsPlain(block);
    const std::uint64_t stored = plain ? m_header.block_size : Shifted(next - here);
    if (stored > room.size()) {
        return false;
    }
    size = static_cast<std::size_t>(stored);
    const auto position = static_cast<std::int32_t>(static_cast<std::uint32_t>(Shifted(here)));
    return m_file.ReadAt(position, room.first(size)) == size;
}

/// An index quantity in bytes. Shifts of 32 and more leave nothing of a 32-bit quantity.
std::uint64_t CCsoReader::Shifted(std::uint32_t quantity) const {
    return m_header.align < 32 ? static_cast<std::uint64_t>(quantity) << m_header.align : 0;
}

ECsoFault CCsoReader::FaultOf(const SInflatedBlock& block) const {
    if (!block.wasRead) {
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
    return block.outcome.failed ? ECsoFault::InflateEnd : ECsoFault::None;
}

}  // namespace vantrel
