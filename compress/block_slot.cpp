#include "compress/block_slot.h"

#include <algorithm>

namespace vantrel {

void ReadStoredBlocks(CStoredBlocks& container, std::uint64_t first, std::span<SBlock> blocks,
                      std::span<std::uint8_t> room, std::size_t storedRoom) {
    for (SBlock& block : blocks) {
        block.isUnreadable = !container.ReadStored(first++, room.first(storedRoom), block);
        room = room.subspan(block.stored.size());
    }
}

namespace {

/// A partial last block may be stored as what is left of the image. Only its size then tells the end of the data from
/// the padding behind it.
SStreamOutcome ExpandLz4Block(const SBlock& block, std::span<std::uint8_t> room) {
    const SStreamOutcome whole = ExpandLz4(block.stored, room);
    return whole.HasAllOutput() || block.imageSize >= room.size()
               ? whole
               : ExpandLz4(block.stored, room.first(block.imageSize));
}

}  // namespace

void ExpandStoredBlock(SBlock& block, CBlockCoder& coder, std::span<std::uint8_t> room) {
    if (block.storedAs == EStoredAs::Plain) {
        block.content = block.stored;
    } else if (!block.isUnreadable) {
        block.outcome = block.storedAs == EStoredAs::Lz4 ? ExpandLz4Block(block, room) : coder.Run(block.stored, room);
        block.content = room.first(block.outcome.produced);
    }
}

bool CBlockSlot::Allocate(const SBlockSizes& sizes, std::uint32_t blocks, CByteSource* image) {
    m_sizes = sizes;
    m_content = TryAllocate(std::uint64_t{blocks} * sizes.block);
    m_stored = TryAllocate(std::uint64_t{blocks} * sizes.stored);
    m_blocks.resize(blocks);
    m_piece = image != nullptr ? image->NewPiece(std::size_t{blocks} * sizes.block) : nullptr;
    return m_content && m_stored && (image == nullptr || m_piece);
}

std::span<SBlock> CBlockSlot::Renew(std::uint32_t count) {
    m_count = count;
    const std::span blocks = std::span(m_blocks).first(count);
    std::ranges::fill(blocks, SBlock());
    return blocks;
}

void CBlockSlot::LoadImage(std::uint64_t first, std::uint32_t count) {
    Renew(count);
    m_piece->Load(static_cast<std::int64_t>(first * m_sizes.block), ContentRoom());
}

/// Finds the blocks in what has been loaded.
void CBlockSlot::DivideImage() {
    const std::span room = ContentRoom();
    const std::size_t length = m_piece->Expand(room);
    std::ranges::fill(room.subspan(length), std::uint8_t{0});
    std::span<const std::uint8_t> rest = room.first(length);
    for (SBlock& block : std::span(m_blocks).first(m_count)) {
        block.content = rest.first(std::min<std::size_t>(rest.size(), m_sizes.block));
        rest = rest.subspan(block.content.size());
        if (m_sizes.pads && !block.content.empty()) {
            block.padding = m_sizes.block - block.content.size();
            block.content = {block.content.data(), m_sizes.block};
        }
    }
}

/// Results lie end to end, so that the slot touches no more memory than they take.
void CBlockSlot::Deflate(CBlockCoder& coder) {
    DivideImage();
    std::span room = StoredRoom();
    for (SBlock& block : std::span(m_blocks).first(m_count)) {
        if (!block.content.empty()) {
            block.outcome = coder.Run(block.content, room.first(m_sizes.stored));
            block.stored = room.first(block.outcome.produced);
            room = room.subspan(block.outcome.produced);
        }
    }
}

void CBlockSlot::ReadContainer(CStoredBlocks& container, std::uint64_t first, std::uint32_t count) {
    ReadStoredBlocks(container, first, Renew(count), StoredRoom(), m_sizes.stored);
}

void CBlockSlot::Inflate(CBlockCoder& coder) {
    std::span room = ContentRoom();
    for (SBlock& block : std::span(m_blocks).first(m_count)) {
        ExpandStoredBlock(block, coder, room.first(m_sizes.block));
        room = room.subspan(block.outcome.produced);
    }
}

}  // namespace vantrel
