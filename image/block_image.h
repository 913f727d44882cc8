// An image that is stored in blocks: finds the blocks that a read covers, and caches the latest one. Each form says how
// to load and expand blocks.
#pragma once

#include "image/image_source.h"

namespace vantrel {

/// The geometry of a block image, and its name in messages.
struct SBlockGeometry {
    std::string path;
    std::int64_t size = 0;
    std::uint32_t blockSize = 1;  ///< Only the last block of the image may be shorter.
    const char* noun = "";
};

/// Consecutive blocks of an image.
class CBlockPiece : public CSourcePiece {
public:
    explicit CBlockPiece(const SBlockGeometry& geometry) : m_geometry(geometry) {}

    void Load(std::int64_t position, std::span<std::uint8_t> room) final;
    std::size_t Expand(std::span<std::uint8_t> room) final;
    std::string Problem() const final;

    /// Why the block behind the last one that Expand returned is unreadable; empty if it is not.
    const std::string& Fault() const { return m_fault; }

private:
    virtual void LoadBlocks(std::uint64_t first, std::size_t count) = 0;
    /// Expands block `index` of those that were loaded into a room of a block. Returns false and sets `fault` if it is
    /// unreadable.
    virtual bool ExpandBlock(std::size_t index, std::span<std::uint8_t> room, std::string& fault) = 0;

    const SBlockGeometry& m_geometry;
    std::uint64_t m_first = 0;
    std::size_t m_count = 0;
    std::uint64_t m_faulty = 0;
    std::string m_fault;
};

class CBlockImage : public CImageSource {
public:
    std::int64_t Size() const override { return m_geometry.size; }
    std::uint32_t BlockSize() const override { return m_geometry.blockSize; }
    const char* BlockNoun() const override { return m_geometry.noun; }
    const std::string& Fault() const override { return m_fault; }
    const std::string& ReadProblem() const override { return m_problem; }
    std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) override;

    std::uint32_t PieceUnit() const override { return m_geometry.blockSize; }
    std::unique_ptr<CSourcePiece> NewPiece(std::size_t size) override;

protected:
    /// Must be called before the first read.
    void SetGeometry(SBlockGeometry geometry) { m_geometry = std::move(geometry); }
    const SBlockGeometry& Geometry() const { return m_geometry; }

private:
    /// A piece for `count` blocks; null if allocation fails.
    virtual std::unique_ptr<CBlockPiece> NewBlocks(std::size_t count) = 0;

    std::size_t ReadBlock(std::uint64_t number, std::span<std::uint8_t> room);
    std::span<const std::uint8_t> CachedBlock(std::uint64_t number);

    static constexpr std::uint64_t kNoBlock = ~std::uint64_t{0};

    SBlockGeometry m_geometry;
    std::unique_ptr<CBlockPiece> m_piece;
    std::vector<std::uint8_t> m_room;
    std::uint64_t m_current = kNoBlock;
    std::size_t m_length = 0;
    std::string m_fault;
    std::string m_problem;
};

}  // namespace vantrel
