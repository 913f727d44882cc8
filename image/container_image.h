// An image in a container of compressed blocks.
#pragma once

#include "compress/block_slot.h"
#include "image/block_image.h"

namespace vantrel {

class CContainerImage : public CBlockImage {
public:
    explicit CContainerImage(EStreamForm streams) : m_streams(streams) {}

    virtual CStoredBlocks& Stored() = 0;
    virtual SBlockSizes Sizes() const = 0;
    /// What is wrong with an expanded block; empty if nothing is. Several threads may ask at once.
    virtual std::string FaultOf(std::uint64_t number, const SBlock& block) const = 0;

    EStreamForm Streams() const { return m_streams; }

private:
    std::unique_ptr<CBlockPiece> NewBlocks(std::size_t count) final;

    EStreamForm m_streams;
};

/// Stored bytes as a percentage of the image's bytes, with one decimal.
double RatioPercent(std::int64_t stored, std::uint64_t image);

}  // namespace vantrel
