#include "raw/sector_expander.h"

#include <algorithm>
#include <span>
#include <vector>

#include "raw/pieces_ahead.h"

namespace vantrel {

namespace {

/// Sectors of one piece of work: large enough that handing it over costs nothing, small enough for the caches.
constexpr std::uint32_t kPieceSectors = 64;

/// A stretch of raw sectors.
class CRawPiece {
public:
    /// Fills the piece with the raw sectors from `first` on, reading the image where it stands.
    void Make(CInputFile& image, const SExpansion& expansion, std::uint32_t first) {
        m_sectors = std::min(kPieceSectors, expansion.AllSectors() - first);
        m_data.resize(std::size_t{kPieceSectors} * kUserDataSize);
        m_raw.resize(std::size_t{kPieceSectors} * kRawSectorSize);
        const std::uint32_t ofImage = std::min(m_sectors, expansion.sectors - std::min(first, expansion.sectors));
        const auto wanted = std::span(m_data).first(std::size_t{ofImage} * kUserDataSize);
        m_complete = image.Read(wanted) == wanted.size();
        std::fill(m_data.begin() + static_cast<std::ptrdiff_t>(wanted.size()), m_data.end(), std::uint8_t{0});
        for (std::uint32_t i = 0; m_complete && i < m_sectors; ++i) {
            EncodeSector(expansion.mode, first + i, std::span(m_data).subspan(i * kUserDataSize).first<kUserDataSize>(),
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
    CPiecesAhead<CRawPiece> pieces(count, true, [&](CRawPiece& piece, std::uint32_t number) {
        piece.Make(image, expansion, number * kPieceSectors);
    });
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
