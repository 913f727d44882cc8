#include "raw/sector_expander.h"

#include <algorithm>
#include <span>
#include <vector>

#include "operation/progress.h"
#include "operation/text.h"
#include "pipeline/ordered_pipeline.h"

namespace vantrel {

namespace {

/// Sectors of a piece: large enough that passing it between threads costs nothing, small enough for the caches.
constexpr std::uint32_t kPieceSectors = 256;
/// One thread reads and encodes about as fast as another one writes. With several slots neither of them waits.
constexpr std::uint32_t kWorkers = 1;
constexpr std::size_t kSlots = 6;

/// Consecutive raw sectors.
class CRawPiece {
public:
    CRawPiece()
        : m_data(std::size_t{kPieceSectors} * kUserDataSize), m_raw(std::size_t{kPieceSectors} * kRawSectorSize) {}

    /// Reads the user data of the sectors from `first` on at the current position of the image. The postgap is zeros.
    void Read(CInputFile& image, const SExpansion& expansion, std::uint32_t first) {
        m_first = first;
        m_sectors = std::min(kPieceSectors, expansion.AllSectors() - first);
        const std::uint32_t ofImage =
            std::min(m_sectors, expansion.imageSectors - std::min(first, expansion.imageSectors));
        const auto wanted = std::span(m_data).first(std::size_t{ofImage} * kUserDataSize);
        m_complete = image.Read(wanted) == wanted.size();
        std::fill(m_data.begin() + static_cast<std::ptrdiff_t>(wanted.size()), m_data.end(), std::uint8_t{0});
    }

    void Encode(ESectorMode mode) {
        for (std::uint32_t i = 0; m_complete && i < m_sectors; ++i) {
            EncodeSector(mode, m_first + i, std::span(m_data).subspan(i * kUserDataSize).first<kUserDataSize>(),
                         std::span(m_raw).subspan(i * kRawSectorSize).first<kRawSectorSize>());
        }
    }

    /// False if the image could not be read in full.
    bool IsComplete() const { return m_complete; }
    std::uint32_t Sectors() const { return m_sectors; }
    std::span<const std::uint8_t> Bytes() const {
        return std::span(m_raw).first(std::size_t{m_sectors} * kRawSectorSize);
    }

private:
    bool m_complete = false;
    std::uint32_t m_first = 0;
    std::uint32_t m_sectors = 0;
    std::vector<std::uint8_t> m_data;
    std::vector<std::uint8_t> m_raw;
};

/// Returns false if the image could not be read in full. Only then is no other thread using it any more.
bool WritePieces(CInputFile& image, const SExpansion& expansion, CCheckedOutput& output, CProgress& progress) {
    const std::uint32_t count = (expansion.AllSectors() + kPieceSectors - 1) / kPieceSectors;
    COrderedPipeline<CRawPiece> pieces(
        count, kWorkers, std::vector<CRawPiece>(kSlots),
        [&](CRawPiece& piece, std::uint64_t number) {
            piece.Read(image, expansion, static_cast<std::uint32_t>(number) * kPieceSectors);
        },
        [&](CRawPiece& piece, std::uint64_t, std::uint32_t) { piece.Encode(expansion.mode); });
    while (const CRawPiece* piece = pieces.Next()) {
        if (!piece->IsComplete()) {
            return false;
        }
        output.WriteOrFail(piece->Bytes());
        progress.Advance(piece->Sectors());
    }
    return true;
}

}  // namespace

std::uint32_t SExpansion::AllSectors() const {
    return imageSectors + (postgap ? static_cast<std::uint32_t>(kPostgapSectors) : 0);
}

SExpansion PlanExpansion(const CCheckedInput& image, ESectorMode mode, bool postgap, COperation& operation) {
    const std::int64_t sectors = image.SizeOrFail() / kSectorSize;
    if (sectors + (postgap ? kPostgapSectors : 0) > kMostRawSectors) {
        operation.Fail(Format("%s is too long for a CD: addresses end at 99:59:74, after %u sectors",
                              image.Path().c_str(), kMostRawSectors));
    }
    return {mode, static_cast<std::uint32_t>(sectors), postgap};
}

void ExpandSectors(CCheckedInput& image, const SExpansion& expansion, CCheckedOutput& output, COperation& operation) {
    CProgress progress(operation, expansion.AllSectors());
    image.Seek(0);
    if (!WritePieces(image, expansion, output, progress)) {
        image.FailIncomplete();
    }
}

}  // namespace vantrel
