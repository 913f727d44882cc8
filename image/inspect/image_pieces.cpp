#include "image/inspect/image_pieces.h"

#include <algorithm>
#include <array>

#include "console/open_image.h"
#include "console/refused.h"
#include "files/input_file.h"
#include "operation/text.h"
#include "raw/sector_check.h"

namespace vantrel {

namespace {

/// What is read at once, about: a piece is whole blocks.
constexpr std::int64_t kPieceSize = 1 << 20;

std::uint64_t PiecesIn(std::int64_t size, std::int64_t pieceSize) {
    return static_cast<std::uint64_t>((size + pieceSize - 1) / pieceSize);
}

/// An image of any form, through its one interface.
class CReadPieces : public CImagePieces {
public:
    explicit CReadPieces(CImageSource& image)
        : m_image(image),
          m_blockSize(image.BlockSize()),
          m_pieceSize(std::max<std::int64_t>(kPieceSize / m_blockSize, 1) * m_blockSize) {}

    std::uint64_t Count() const override { return PiecesIn(m_image.Size(), m_pieceSize); }
    std::size_t Room() const override { return static_cast<std::size_t>(m_pieceSize); }

    void Read(SImagePiece& piece, std::uint64_t number) override {
        const std::int64_t start = static_cast<std::int64_t>(number) * m_pieceSize;
        const std::int64_t end = std::min(start + m_pieceSize, m_image.Size());
        piece.length = 0;
        piece.unreadable.clear();
        for (std::int64_t position = start; position < end;) {
            const auto wanted = static_cast<std::size_t>(end - position);
            const std::size_t count = m_image.ReadAt(position, std::span(piece.room).subspan(piece.length, wanted));
            piece.length += count;
            position += static_cast<std::int64_t>(count);
            if (count < wanted) {
                const std::int64_t block = position / m_blockSize;
                piece.unreadable.push_back({static_cast<std::uint64_t>(block), m_image.Fault()});
                position = (block + 1) * m_blockSize;
            }
        }
    }

    std::vector<std::string> Problems() const override { return {}; }

private:
    CImageSource& m_image;
    std::int64_t m_blockSize;
    std::int64_t m_pieceSize;
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

/// A raw image: everything around the user data of each sector is checked. Addresses must follow the first one.
class CRawPieces : public CImagePieces {
public:
    explicit CRawPieces(const std::string& path) : m_size(SizeOrRefuse(path)) {
        std::array<std::uint8_t, kRawSectorSize> first = {};
        const bool isOpen = m_file.Open(path);
        if (isOpen && m_file.ReadAt(0, first) == first.size()) {
            m_firstNumber = NumberOfSector(first);
        }
        if (!isOpen || m_file.HasFailed()) {
            throw CRefused(path + ": " + LastFileError());
        }
    }

    std::uint64_t Count() const override { return PiecesIn(Sectors(), kPieceSectors); }
    std::size_t Room() const override { return static_cast<std::size_t>(kPieceSectors * kRawUnit); }

    void Read(SImagePiece& piece, std::uint64_t number) override {
        const std::int64_t start = static_cast<std::int64_t>(number) * kPieceSectors;
        const std::int64_t end = std::min(start + kPieceSectors, Sectors());
        piece.unreadable.clear();
        for (std::int64_t sector = start; sector < end; ++sector) {
            const auto rest = std::span(piece.room)
                                  .subspan(static_cast<std::size_t>((sector - start) * kRawUnit),
                                           static_cast<std::size_t>((end - sector) * kRawUnit));
            const std::size_t count = m_file.ReadAt(sector * kRawUnit, rest);
            sector += static_cast<std::int64_t>(count / kRawSectorSize);
            if (count < rest.size()) {
                piece.unreadable.push_back({static_cast<std::uint64_t>(sector), "it cannot be read"});
            }
        }
        Check(piece, static_cast<std::uint64_t>(start), static_cast<std::size_t>(end - start));
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
    static constexpr std::int64_t kPieceSectors = kPieceSize / static_cast<std::int64_t>(kUserDataSize);

    /// Checks the sectors that could be read, and moves their user data together.
    void Check(SImagePiece& piece, std::uint64_t first, std::size_t count) const {
        auto unreadable = piece.unreadable.begin();
        piece.wrong.clear();
        piece.length = 0;
        for (std::size_t i = 0; i < count; ++i) {
            if (unreadable != piece.unreadable.end() && unreadable->number == first + i) {
                ++unreadable;
                continue;
            }
            const auto sector = std::span(piece.room).subspan(i * kRawSectorSize).first<kRawSectorSize>();
            const SSectorFaults found = CheckSector(sector, m_firstNumber + static_cast<std::uint32_t>(first + i));
            if (found.Any()) {
                piece.wrong.push_back({first + i, TextOf(found)});
            }
            // Towards the beginning: never over a sector that is still to be looked at.
            const auto data = UserDataOf(sector);
            std::copy(data.begin(), data.end(), piece.room.begin() + static_cast<std::ptrdiff_t>(piece.length));
            piece.length += data.size();
        }
    }

    std::int64_t Sectors() const { return m_size / kRawUnit; }

    std::int64_t m_size;
    CInputFile m_file;
    std::uint32_t m_firstNumber = 0;
};

}  // namespace

std::unique_ptr<CImagePieces> PiecesOf(const std::string& path, CImageSource& image) {
    if (image.Form() == EForm::Bin) {
        return std::make_unique<CRawPieces>(path);
    }
    return std::make_unique<CReadPieces>(image);
}

}  // namespace vantrel
