#include "raw/sector_expander.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "operation/progress.h"
#include "operation/text.h"
#include "pipeline/ordered_pipeline.h"

namespace vantrel {

namespace {

/// Sectors of a piece: large enough that passing it between threads costs nothing, small enough for the caches. The
/// blocks of a compressed image may be larger.
constexpr std::uint32_t kPieceSectors = 256;
/// One thread reads and encodes about as fast as another one writes. With several slots neither of them waits.
constexpr std::size_t kFewestSlots = 6;
constexpr std::size_t kMostSlots = 24;

/// Consecutive raw sectors.
class CRawPiece {
public:
    CRawPiece(CByteSource& image, std::uint32_t sectors)
        : m_unit(image.PieceUnit()),
          m_data(std::size_t{sectors} * kUserDataSize),
          m_raw(std::size_t{sectors} * kRawSectorSize),
          m_source(image.NewPiece(m_data.size())) {}

    /// Loads the user data of the sectors from `first` on. The postgap is zeros.
    void Load(const SExpansion& expansion, std::uint32_t first) {
        m_first = first;
        m_sectors = std::min(static_cast<std::uint32_t>(m_data.size() / kUserDataSize), expansion.AllSectors() - first);
        const std::uint32_t ofImage =
            std::min(m_sectors, expansion.imageSectors - std::min(first, expansion.imageSectors));
        m_wanted = std::size_t{ofImage} * kUserDataSize;
        if (m_wanted > 0 && m_source) {
            m_source->Load(static_cast<std::int64_t>(first) * static_cast<std::int64_t>(kUserDataSize), Room());
        }
    }

    void Encode(ESectorMode mode) {
        m_complete = m_wanted == 0 || (m_source && m_source->Expand(Room()) >= m_wanted);
        std::fill(m_data.begin() + static_cast<std::ptrdiff_t>(m_wanted), m_data.end(), std::uint8_t{0});
        for (std::uint32_t i = 0; m_complete && i < m_sectors; ++i) {
            EncodeSector(mode, m_first + i, std::span(m_data).subspan(i * kUserDataSize).first<kUserDataSize>(),
                         std::span(m_raw).subspan(i * kRawSectorSize).first<kRawSectorSize>());
        }
    }

    /// False if the image could not be read in full.
    bool IsComplete() const { return m_complete; }
    /// Why; empty if the image just ended.
    std::string Problem() const { return m_source ? m_source->Problem() : "not enough memory to read the image"; }
    std::uint32_t Sectors() const { return m_sectors; }
    std::span<const std::uint8_t> Bytes() const {
        return std::span(m_raw).first(std::size_t{m_sectors} * kRawSectorSize);
    }

private:
    /// The wanted bytes in whole units of the image.
    std::span<std::uint8_t> Room() {
        return std::span(m_data).first(std::min(m_data.size(), (m_wanted + m_unit - 1) / m_unit * m_unit));
    }

    std::size_t m_unit;
    bool m_complete = false;
    std::size_t m_wanted = 0;
    std::uint32_t m_first = 0;
    std::uint32_t m_sectors = 0;
    std::vector<std::uint8_t> m_data;
    std::vector<std::uint8_t> m_raw;
    std::unique_ptr<CSourcePiece> m_source;
};

std::vector<CRawPiece> SlotsOf(CByteSource& image, std::uint32_t sectors, std::uint32_t workers) {
    std::vector<CRawPiece> slots;
    while (slots.size() < std::clamp(SlotsFor(workers), kFewestSlots, kMostSlots)) {
        slots.emplace_back(image, sectors);
    }
    return slots;
}

/// If the image could not be read in full, returns why (see CRawPiece::Problem). Only then is no other thread using it
/// any more.
std::optional<std::string> WritePieces(CByteSource& image, const SExpansion& expansion, CCheckedOutput& output,
                                       CProgress& progress, std::uint32_t workers) {
    const std::uint32_t sectors =
        std::max(kPieceSectors, image.PieceUnit() / static_cast<std::uint32_t>(kUserDataSize));
    COrderedPipeline<CRawPiece> pieces(
        (expansion.AllSectors() + sectors - 1) / sectors, workers, SlotsOf(image, sectors, workers),
        [&](CRawPiece& piece, std::uint64_t number) {
            piece.Load(expansion, static_cast<std::uint32_t>(number) * sectors);
        },
        [&](CRawPiece& piece, std::uint64_t, std::uint32_t) { piece.Encode(expansion.mode); });
    while (const CRawPiece* piece = pieces.Next()) {
        if (!piece->IsComplete()) {
            return piece->Problem();
        }
        output.WriteOrFail(piece->Bytes());
        progress.Advance(piece->Sectors());
    }
    return std::nullopt;
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

void ExpandSectors(CCheckedInput& image, const SExpansion& expansion, CCheckedOutput& output, COperation& operation,
                   std::uint32_t workers) {
    CProgress progress(operation, expansion.AllSectors());
    if (const std::optional<std::string> problem = WritePieces(image, expansion, output, progress, workers)) {
        if (!problem->empty()) {
            operation.Fail(*problem);
        }
        image.FailIncomplete();
    }
}

}  // namespace vantrel
