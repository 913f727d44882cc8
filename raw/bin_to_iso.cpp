#include "raw/bin_to_iso.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "files/input_file.h"
#include "files/path.h"
#include "operation/frame.h"
#include "operation/text.h"
#include "pieces/pieces_ahead.h"
#include "raw/raw_sector.h"

namespace vantrel {

namespace {

/// Sectors that are read at once.
constexpr std::int64_t kPieceSectors = 64;
constexpr auto kRawUnit = static_cast<std::int64_t>(kRawSectorSize);

/// A stretch of raw sectors as read; what could not be read is zero.
struct SRawPiece {
    std::vector<std::uint8_t> bytes = std::vector<std::uint8_t>(kPieceSectors * kRawUnit);
    bool complete = true;

    void Read(CInputFile& input, std::int64_t sectors) {
        bytes.resize(static_cast<std::size_t>(sectors * kRawUnit));
        const std::size_t count = input.Read(bytes);
        complete = count == bytes.size();
        std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(count), bytes.end(), std::uint8_t{0});
    }

    std::span<const std::uint8_t> UserData(std::int64_t sector) const {
        return std::span(bytes).subspan(static_cast<std::size_t>(sector) * kRawSectorSize + kForm1DataOffset,
                                        kUserDataSize);
    }
};

void OpenFiles(const SBinToIsoRequest& request, CInputFile& input, COutputFile& output, COperation& operation) {
    if (!input.Open(request.inputPath)) {
        operation.Fail(Format("Code 2011 - Error Opening %s", request.inputPath.c_str()));
    }
    if (!output.Open(request.outputPath, request.manner)) {
        operation.Fail(Format("Code 2021 - Error Opening %s", request.outputPath.c_str()));
    }
}

bool BeginsWithMode2(CInputFile& input) {
    std::array<std::uint8_t, kHeaderEnd> beginning = {};
    input.ReadAt(0, beginning);
    return std::equal(kSync.begin(), kSync.end(), beginning.begin()) && beginning[kModeOffset] == kMode2;
}

void CopyUserData(const SBinToIsoRequest& request, CInputFile& input, COutputFile& output, std::int64_t count,
                  COperation& operation) {
    const bool inPlace = request.manner == EOutputManner::InPlace;
    const auto pieceCount = static_cast<std::uint32_t>((count + kPieceSectors - 1) / kPieceSectors);
    input.Seek(0);
    // The window works on one thread. There is nothing to do but to read.
    const std::uint32_t workers = inPlace ? 0 : 1;
    CPiecesAhead<SRawPiece> pieces(
        pieceCount, workers, std::vector<SRawPiece>(PlacesFor(workers)),
        [&](SRawPiece& piece, std::uint64_t number) {
            piece.Read(input, std::min(kPieceSectors, count - static_cast<std::int64_t>(number) * kPieceSectors));
        },
        [](SRawPiece&, std::uint64_t, std::uint32_t) {});
    std::int64_t sector = 0;
    while (const SRawPiece* piece = pieces.Next()) {
        if (!inPlace && !piece->complete) {
            operation.Fail("Cannot read " + request.inputPath);
        }
        const std::int64_t end = std::min(sector + kPieceSectors, count);
        for (std::int64_t i = 0; sector < end; ++i, ++sector) {
            output.Write(piece->UserData(i));
            ShowUnitDone(operation, sector, count, static_cast<std::uint32_t>(kUserDataSize));
        }
    }
}

}  // namespace

SBinToIsoRequest WindowBinToIso(const std::string& folder, const std::string& fileName) {
    return {folder + fileName, folder + "new-" + BaseNameOf(fileName) + ".iso", EOutputManner::InPlace};
}

void BinToIso(const SBinToIsoRequest& request, COperation& operation) {
    CInputFile input;
    COutputFile output;
    DisableFrameCommands(operation);
    OpenFiles(request, input, output, operation);
    operation.SetPane(EPane::File, request.inputPath);
    if (!BeginsWithMode2(input)) {
        operation.Fail("Error bin image => MODE 2 only !");
    }
    const std::int64_t size = std::max<std::int64_t>(input.Size(), 0);
    const std::int64_t count = size / kRawUnit;
    operation.SetPane(EPane::Status, "Converting bin2iso, please Wait");
    operation.StartProgress(ProgressRange(count), EProgressFill::Dvd);
    CopyUserData(request, input, output, count, operation);
    if (!output.Commit()) {
        operation.Fail(output.FailureText());
    }
    input.Close();
    if (request.manner != EOutputManner::InPlace && size % kRawUnit != 0) {
        operation.Notify(Format("%s: the last %d bytes are no whole sector and were left out",
                                request.inputPath.c_str(), static_cast<int>(size % kRawUnit)));
    }
    operation.SetPane(EPane::File, request.outputPath);
    operation.SetPane(EPane::Status, "Converted bin2iso done !");
    operation.Complete("Conversion bin2iso Done !");
}

}  // namespace vantrel
