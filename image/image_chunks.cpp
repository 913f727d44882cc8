#include "image/image_chunks.h"

#include <algorithm>
#include <utility>

#include "files/input_file.h"
#include "files/refused.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// Approximate size of a chunk, which is a whole number of blocks.
constexpr std::int64_t kChunkSize = 1 << 20;

std::uint64_t ChunksIn(std::int64_t size, std::int64_t chunkSize) {
    return static_cast<std::uint64_t>((size + chunkSize - 1) / chunkSize);
}

/// An image of any form, read through its common interface.
class CReadChunks : public CImageChunks {
public:
    explicit CReadChunks(CImageSource& image)
        : m_image(image),
          m_blockSize(image.BlockSize()),
          m_chunkSize(std::max<std::int64_t>(kChunkSize / m_blockSize, 1) * m_blockSize) {}

    std::uint64_t Count() const override { return ChunksIn(m_image.Size(), m_chunkSize); }
    std::size_t BufferSize() const override { return static_cast<std::size_t>(m_chunkSize); }

    void Read(SImageChunk& chunk, std::uint64_t number) override {
        const std::int64_t start = static_cast<std::int64_t>(number) * m_chunkSize;
        const std::int64_t end = std::min(start + m_chunkSize, m_image.Size());
        chunk.length = 0;
        chunk.unreadable.clear();
        for (std::int64_t position = start; position < end;) {
            const auto wanted = static_cast<std::size_t>(end - position);
            const std::size_t count = m_image.ReadAt(position, std::span(chunk.buffer).subspan(chunk.length, wanted));
            chunk.length += count;
            position += static_cast<std::int64_t>(count);
            if (count < wanted) {
                const std::int64_t block = position / m_blockSize;
                chunk.unreadable.push_back({static_cast<std::uint64_t>(block), m_image.Fault()});
                position = (block + 1) * m_blockSize;
            }
        }
    }

    std::vector<std::string> Problems() const override { return {}; }

private:
    CImageSource& m_image;
    std::int64_t m_blockSize;
    std::int64_t m_chunkSize;
};

/// A data track of a raw image: checks everything around the user data of each sector. Addresses must count up from
/// the first one.
class CRawChunks : public CImageChunks {
public:
    explicit CRawChunks(const STrack& track) : m_track(track), m_sectorSize(SectorSizeOf(m_track.mode)) {
        if (!m_file.Open(m_track.path)) {
            throw CRefused(m_track.path + ": " + LastFileError());
        }
        std::vector<std::uint8_t> first(m_sectorSize);
        if (m_sectorSize == kRawSectorSize && m_file.ReadAt(m_track.position, first) == first.size()) {
            m_firstNumber = NumberOfSector(std::span(first).first<kRawSectorSize>());
        }
        if (m_file.HasFailed()) {
            throw CRefused(m_file.Problem());
        }
    }

    std::uint64_t Count() const override { return ChunksIn(m_track.sectors, kChunkSectors); }
    std::size_t BufferSize() const override { return kChunkSectors * m_sectorSize; }

    void Read(SImageChunk& chunk, std::uint64_t number) override {
        const std::int64_t start = static_cast<std::int64_t>(number) * kChunkSectors;
        const std::int64_t end = std::min(start + kChunkSectors, m_track.sectors);
        const auto unit = static_cast<std::int64_t>(m_sectorSize);
        chunk.unreadable.clear();
        for (std::int64_t sector = start; sector < end; ++sector) {
            const auto rest = std::span(chunk.buffer)
                                  .subspan(static_cast<std::size_t>((sector - start) * unit),
                                           static_cast<std::size_t>((end - sector) * unit));
            const std::size_t count = m_file.ReadAt(m_track.position + sector * unit, rest);
            sector += static_cast<std::int64_t>(count / m_sectorSize);
            if (count < rest.size()) {
                chunk.unreadable.push_back({static_cast<std::uint64_t>(sector), "it cannot be read"});
            }
        }
        Check(chunk, static_cast<std::uint64_t>(start), static_cast<std::size_t>(end - start));
    }

    std::vector<std::string> Problems() const override {
        std::vector<std::string> problems;
        if (m_track.startsDisc && m_firstNumber != 0) {
            problems.push_back("the first sector's address is not 00:02:00");
        }
        if (m_track.leftOver != 0) {
            problems.push_back(Format("the file is not a whole number of sectors: %lld bytes are left over",
                                      static_cast<long long>(m_track.leftOver)));
        }
        return problems;
    }

private:
    static constexpr std::int64_t kChunkSectors = kChunkSize / static_cast<std::int64_t>(kUserDataSize);

    /// Checks the readable sectors, and moves their user data together. A sector without user data is unreadable.
    void Check(SImageChunk& chunk, std::uint64_t first, std::size_t count) const {
        const std::vector<SBlockFault> unreadable = std::exchange(chunk.unreadable, {});
        auto next = unreadable.begin();
        chunk.wrong.clear();
        chunk.length = 0;
        for (std::size_t i = 0; i < count; ++i) {
            if (next != unreadable.end() && next->number == first + i) {
                chunk.unreadable.push_back(*next++);
                continue;
            }
            const auto sector = std::span(chunk.buffer).subspan(i * m_sectorSize, m_sectorSize);
            const SSectorFaults found =
                CheckSector(m_track.mode, sector, m_firstNumber + static_cast<std::uint32_t>(first + i));
            if (found.Any()) {
                (found.audio ? chunk.unreadable : chunk.wrong).push_back({first + i, TextOf(found)});
            }
            if (found.audio) {
                continue;
            }
            // This moves towards the beginning, so it overwrites only sectors that have been checked.
            const auto data = UserDataOf(m_track.mode, sector);
            std::copy(data.begin(), data.end(), chunk.buffer.begin() + static_cast<std::ptrdiff_t>(chunk.length));
            chunk.length += data.size();
        }
    }

    STrack m_track;
    std::size_t m_sectorSize;
    CInputFile m_file;
    std::uint32_t m_firstNumber = 0;
};

}  // namespace

std::unique_ptr<CImageChunks> ChunksOf(CImageSource& image) {
    return std::make_unique<CReadChunks>(image);
}

std::unique_ptr<CImageChunks> ChunksOf(const STrack& track) {
    return std::make_unique<CRawChunks>(track);
}

}  // namespace vantrel
