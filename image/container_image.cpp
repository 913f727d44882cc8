#include "image/container_image.h"

#include <algorithm>
#include <cmath>

namespace vantrel {

namespace {

class CStoredPiece : public CBlockPiece {
public:
    CStoredPiece(CContainerImage& image, const SBlockGeometry& geometry)
        : CBlockPiece(geometry),
          m_image(image),
          m_stream({image.Streams(), std::nullopt}, EStreamUse::Reused),
          m_storedRoom(image.Sizes().stored) {}

    /// Returns false if allocation fails.
    bool Allocate(std::size_t count) {
        m_blocks.resize(count);
        m_size = count * m_storedRoom;
        m_stored = TryAllocate(m_size);
        return m_stored != nullptr;
    }

private:
    void LoadBlocks(std::uint64_t first, std::size_t count) override {
        m_first = first;
        std::ranges::fill(m_blocks, SBlock());
        ReadStoredBlocks(m_image.Stored(), first, std::span(m_blocks).first(count), {m_stored.get(), m_size},
                         m_storedRoom);
    }

    bool ExpandBlock(std::size_t index, std::span<std::uint8_t> room, std::string& fault) override {
        SBlock& block = m_blocks[index];
        ExpandStoredBlock(block, m_stream, room);
        fault = m_image.FaultOf(m_first + index, block);
        if (block.storedAs == EStoredAs::Plain && fault.empty()) {
            std::ranges::copy(block.content, room.begin());
        }
        return fault.empty();
    }

    CContainerImage& m_image;
    CBlockStream m_stream;
    std::size_t m_storedRoom;
    std::uint64_t m_first = 0;
    std::vector<SBlock> m_blocks;
    std::size_t m_size = 0;
    Buffer m_stored;
};

}  // namespace

std::unique_ptr<CBlockPiece> CContainerImage::NewBlocks(std::size_t count) {
    auto piece = std::make_unique<CStoredPiece>(*this, Geometry());
    return piece->Allocate(count) ? std::move(piece) : nullptr;
}

double RatioPercent(std::int64_t stored, std::uint64_t image) {
    return image > 0 ? std::round(1000.0 * static_cast<double>(stored) / static_cast<double>(image)) / 10 : 0.0;
}

}  // namespace vantrel
