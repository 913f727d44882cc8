#include "raw/sector_expander.h"

#include <algorithm>
#include <span>
#include <vector>

#include "pipeline/ordered_pipeline.h"

namespace vantrel {

namespace {

/// Sectors of one piece of work: large enough that handing it over costs nothing, small enough for the caches.
constexpr std::uint32_t kPieceSectors = 256;
/// One thread reads and encodes about as fast as another writes, and with some pieces between them neither waits.
constexpr std::uint32_t kWorkers = 1;
constexpr std::size_t kPlaces = 6;

/// A stretch of raw sectors.
class CRawPiece {
public:
    CRawPiece()
        : m_data(std::size_t{kPieceSectors} * kUserDataSize), m_raw(std::size_t{kPieceSectors} * kRawSectorSize) {}

    /// Reads the user data of the sectors from `first` on, where the image stands; the postgap's is zero.
    void Read(CInputFile& image, const SExpansion& expansion, std::uint32_t first) {
        m_first = first;
        m_sectors = std::min(kPieceSectors, expansion.AllSectors() - first);
        const std::uint32_t ofImage = std::min(m_sectors, expansion.sectors - std::min(first, expansion.sectors));
        const auto wanted = std::span(m_data).first(std::size_t{ofImage} * kUserDataSize);
        m_complete = image.Read(wanted) == wanted.size();
        std::fill(m_data.begin() + static_cast<std::ptrdiff_t>(wanted.size()), m_data.end(), std::uint8_t{0});
    }

    /// Makes raw sectors of what was read.
    void Encode(ESectorMode mode) {
        for (std::uint32_t i = 0; m_complete && i < m_sectors; ++i) {
            EncodeSector(mode, m_first + i, std::span(m_data).subspan(i * kUserDataSize).first<kUserDataSize>(),
                         std::span(m_raw).subspan(i * kRawSectorSize).first<kRawSectorSize>());
        }
    }

    /// False when the image could not be read.
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

}  // namespace

EExpanded ExpandSectors(CInputFile& image, const SExpansion& expansion, COutputFile& output,
                        const std::function<void(std::uint32_t sectorsDone)>& onProgress) {
    if (!image.Seek(0)) {
        return EExpanded::ReadFailed;
    }
    const std::uint32_t count = (expansion.AllSectors() + kPieceSectors - 1) / kPieceSectors;
    CPiecesAhead<CRawPiece> pieces(
        count, kWorkers, std::vector<CRawPiece>(kPlaces),
        [&](CRawPiece& piece, std::uint64_t number) {
            piece.Read(image, expansion, static_cast<std::uint32_t>(number) * kPieceSectors);
        },
        [&](CRawPiece& piece, std::uint64_t, std::uint32_t) { piece.Encode(expansion.mode); });
    std::uint32_t done = 0;
    while (const CRawPiece* piece = pieces.Next()) {
        if (!piece->IsComplete()) {
            return EExpanded::ReadFailed;
        }
        if (!output.Write(piece->Bytes())) {
            return EExpanded::WriteFailed;
        }
        done += piece->Sectors();
        onProgress(done);
    }
    return EExpanded::Whole;
}

}  // namespace vantrel
