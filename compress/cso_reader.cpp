#include "compress/cso_reader.h"

#include <zlib.h>

#include <algorithm>

#include "compress/raw_deflate.h"
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
    m_block = TryAllocate(m_header.block_size);
    m_stored = TryAllocate(std::uint64_t{kStoredRoom} * m_header.block_size);
    if (!m_index || !m_block || !m_stored) {
        return ECsoFault::Memory;
    }
    const std::span index(m_index.get(), static_cast<std::size_t>(indexSize));
    return m_file.ReadAt(CsoHeader::kSize, index) == index.size() ? ECsoFault::None : ECsoFault::Index;
}

std::uint32_t CCsoReader::Entry(std::uint64_t block) const {
    return LoadLe32(std::span<const std::uint8_t, kCsoEntrySize>(m_index.get() + block * kCsoEntrySize, kCsoEntrySize));
}

ECsoFault CCsoReader::ReadBlock(std::uint64_t block, std::span<const std::uint8_t>& content) {
    std::span<const std::uint8_t> stored;
    const ECsoFault fault = ReadStored(block, stored);
    if (fault != ECsoFault::None) {
        return fault;
    }
    if (IsPlain(block)) {
        content = stored;
        return ECsoFault::None;
    }
    return Inflate(stored, content);
}

/// Positions are 32-bit quantities with a sign; what lies beyond 2 GiB cannot be reached. A plain block is as long as a
/// block, whatever the next entry says.
ECsoFault CCsoReader::ReadStored(std::uint64_t block, std::span<const std::uint8_t>& stored) {
    const std::uint32_t here = Entry(block) & kPositionMask;
    const std::uint32_t next = Entry(block + 1) & kPositionMask;
    const std::uint64_t size = IsPlain(block) ? m_header.block_size : Shifted(next - here);
    if (size > std::uint64_t{kStoredRoom} * m_header.block_size) {
        return ECsoFault::Read;
    }
    const auto position = static_cast<std::int32_t>(static_cast<std::uint32_t>(Shifted(here)));
    const std::span buffer(m_stored.get(), static_cast<std::size_t>(size));
    stored = buffer;
    return m_file.ReadAt(position, buffer) == size ? ECsoFault::None : ECsoFault::Read;
}

/// An index quantity in bytes. Shifts of 32 and more leave nothing of a 32-bit quantity.
std::uint64_t CCsoReader::Shifted(std::uint32_t quantity) const {
    return m_header.align < 32 ? static_cast<std::uint64_t>(quantity) << m_header.align : 0;
}

ECsoFault CCsoReader::Inflate(std::span<const std::uint8_t> stored, std::span<const std::uint8_t>& content) {
    z_stream stream = {};
    if (inflateInit2(&stream, kRawDeflateWindow) != Z_OK) {
        m_zlibMessage = MessageOf(stream);
        return ECsoFault::InflateBegin;
    }
    stream.next_in = const_cast<Bytef*>(stored.data());
    stream.avail_in = static_cast<uInt>(stored.size());
    stream.next_out = m_block.get();
    stream.avail_out = m_header.block_size;
    const int result = inflate(&stream, Z_FULL_FLUSH);
    m_zlibMessage = MessageOf(stream);
    m_produced = m_header.block_size - stream.avail_out;
    const int ended = inflateEnd(&stream);
    if (result != Z_STREAM_END) {
        return ECsoFault::Inflate;
    }
    content = {m_block.get(), m_produced};
    if (m_produced != m_header.block_size) {
        return ECsoFault::WrongBlockSize;
    }
    return ended == Z_OK ? ECsoFault::None : ECsoFault::InflateEnd;
}

}  // namespace vantrel
