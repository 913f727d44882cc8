// An image that is stored in blocks which only can be had as a whole: finds the blocks that a read touches and keeps
// the last one. The forms say how a block is had.
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
    /// To be called before the first read. `blockSize` is that of every block but a shorter last one.
    void SetGeometry(std::int64_t size, std::uint32_t blockSize);

private:
    /// The content of block `number`, valid until the next call. When it cannot be had, false and the reason.
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
