// An image that is stored in blocks: finds the blocks that a read covers, and caches the latest one. Each form says how
// to load a block.
#pragma once

#include "image/image_source.h"

namespace vantrel {

class CBlockImage : public CImageSource {
public:
    std::int64_t Size() const override { return m_size; }
    std::uint32_t BlockSize() const override { return m_blockSize; }
    const std::string& Fault() const override { return m_fault; }
    std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) override;

protected:
    /// Must be called before the first read. Only the last block may be shorter than `blockSize`.
    void SetGeometry(std::int64_t size, std::uint32_t blockSize);

private:
    /// Loads block `number`; `content` is valid until the next call. Returns false and sets `fault` if the block is
    /// unreadable.
    virtual bool LoadBlock(std::uint64_t number, std::span<const std::uint8_t>& content, std::string& fault) = 0;

    bool MakeCurrent(std::uint64_t number);

    static constexpr std::uint64_t kNoBlock = ~std::uint64_t{0};

    std::int64_t m_size = 0;
    std::uint32_t m_blockSize = 1;
    std::uint64_t m_current = kNoBlock;
    std::span<const std::uint8_t> m_content;
    std::string m_fault;
};

}  // namespace vantrel
