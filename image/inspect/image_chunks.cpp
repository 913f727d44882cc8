#include "image/inspect/image_chunks.h"

#include <algorithm>
#include <array>

#include "files/input_file.h"
#include "files/refused.h"
#include "operation/text.h"
#include "raw/sector_check.h"

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

std::string TextOf(const SSectorFaults& faults) {
    std::string text;
    const auto tell = [&text](bool wrong, const char* what) {
        if (wrong) {
            text += (text.empty() ? "" : ", ") + std::string(what);
        }
    };
    tell(faults.sync, "sync field");
    tell(faults.address, "address");
    tell(faults.kind, "mode or form");
    tell(faults.edc, "EDC");
    tell(faults.parity, "parity");
    return "wrong " + text;
}

/// A raw image: checks everything around the user data of each sector. Addresses must count up from the first one.
class CRawChunks : public CImageChunks {
public:
    explicit CRawChunks(const std::string& path) {
        if (!m_file.Open(path)) {
            throw CRefused(path + ": " + LastFileError());
        }
        m_size = m_file.Size();
        std::array<std::uint8_t, kRawSectorSize> first = {};
        if (m_file.ReadAt(0, first) == first.size()) {
            m_firstNumber = NumberOfSector(first);
        }
        if (m_file.HasFailed()) {
            throw CRefused(m_file.Problem());
        }
    }

    std::uint64_t Count() const override { return ChunksIn(Sectors(), kChunkSectors); }
    std::size_t BufferSize() const override { return static_cast<std::size_t>(kChunkSectors * kRawUnit); }

    void Read(SImageChunk& chunk, std::uint64_t number) override {
        const std::int64_t start = static_cast<std::int64_t>(number) * kChunkSectors;
        const std::int64_t end = std::min(start + kChunkSectors, Sectors());
        chunk.unreadable.clear();
        for (std::int64_t sector = start; sector < end; ++sector) {
            const auto rest = std::span(chunk.buffer)
                                  .subspan(static_cast<std::size_t>((sector - start) * kRawUnit),
                                           static_cast<std::size_t>((end - sector) * kRawUnit));
            const std::size_t count = m_file.ReadAt(sector * kRawUnit, rest);
            sector += static_cast<std::int64_t>(count / kRawSectorSize);
            if (count < rest.size()) {
                chunk.unreadable.push_back({static_cast<std::uint64_t>(sector), "it cannot be read"});
            }
        }
        Check(chunk, static_cast<std::uint64_t>(start), static_cast<std::size_t>(end - start));
    }

    std::vector<std::string> Problems() const override {
        std::vector<std::string> problems;
        if (m_firstNumber != 0) {
            problems.push_back("the first sector's address is not 00:02:00");
        }
        if (m_size % kRawUnit != 0) {
            problems.push_back(Format("the file is not a whole number of sectors: %lld bytes are left over",
                                      static_cast<long long>(m_size % kRawUnit)));
        }
        return problems;
    }

private:
    static constexpr auto kRawUnit = static_cast<std::int64_t>(kRawSectorSize);
    static constexpr std::int64_t kChunkSectors = kChunkSize / static_cast<std::int64_t>(kUserDataSize);

    /// Checks the readable sectors, and moves their user data together.
    void Check(SImageChunk& chunk, std::uint64_t first, std::size_t count) const {
        auto unreadable = chunk.unreadable.begin();
        chunk.wrong.clear();
        chunk.length = 0;
        for (std::size_t i = 0; i < count; ++i) {
            if (unreadable != chunk.unreadable.end() && unreadable->number == first + i) {
                ++unreadable;
                continue;
            }
            const auto sector = std::span(chunk.buffer).subspan(i * kRawSectorSize).first<kRawSectorSize>();
            const SSectorFaults found = CheckSector(sector, m_firstNumber + static_cast<std::uint32_t>(first + i));
            if (found.Any()) {
                chunk.wrong.push_back({first + i, TextOf(found)});
            }
            // This moves towards the beginning, so it overwrites only sectors that have been checked.
            const auto data = UserDataOf(sector);
            std::copy(data.begin(), data.end(), chunk.buffer.begin() + static_cast<std::ptrdiff_t>(chunk.length));
            chunk.length += data.size();
        }
    }

    std::int64_t Sectors() const { return m_size / kRawUnit; }

    CInputFile m_file;
    std::int64_t m_size = 0;
    std::uint32_t m_firstNumber = 0;
};

}  // namespace

std::unique_ptr<CImageChunks> ChunksOf(const std::string& path, CImageSource& image) {
    if (image.Form() == EForm::Bin) {
        return std::make_unique<CRawChunks>(path);
    }
    return std::make_unique<CReadChunks>(image);
}

}  // namespace vantrel
