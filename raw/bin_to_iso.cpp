#include "raw/bin_to_iso.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "files/input_file.h"
#include "files/path.h"
#include "operation/progress.h"
#include "operation/text.h"
#include "pipeline/ordered_pipeline.h"
#include "raw/raw_sector.h"

namespace vantrel {

namespace {

/// Sectors that are read at once, and how many such pieces there may be in memory.
constexpr std::int64_t kPieceSectors = 256;
constexpr std::size_t kPlaces = 6;
constexpr auto kRawUnit = static_cast<std::int64_t>(kRawSectorSize);

/// The user data of a stretch of raw sectors; what could not be read is zero.
class CDataPiece {
public:
    /// Reads raw sectors where the input stands.
    void Read(CInputFile& input, std::int64_t sectors) {
        m_sectors = static_cast<std::size_t>(sectors);
        const auto wanted = std::span(m_bytes).first(m_sectors * kRawSectorSize);
        const std::size_t count = input.Read(wanted);
        m_complete = count == wanted.size();
        std::fill(wanted.begin() + static_cast<std::ptrdiff_t>(count), wanted.end(), std::uint8_t{0});
    }

    /// Moves their user data together.
    void KeepUserData() {
        for (std::size_t i = 0; i < m_sectors; ++i) {
            std::copy_n(m_bytes.data() + i * kRawSectorSize + kForm1DataOffset, kUserDataSize,
                        m_bytes.data() + i * kUserDataSize);
        }
    }

    bool IsComplete() const { return m_complete; }
    std::span<const std::uint8_t> Data() const { return std::span(m_bytes).first(m_sectors * kUserDataSize); }

private:
    /// The raw sectors, and then the user data at the beginning.
    std::vector<std::uint8_t> m_bytes = std::vector<std::uint8_t>(kPieceSectors * kRawUnit);
    std::size_t m_sectors = 0;
    bool m_complete = true;
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

/// The window works on one thread, and writes and shows every sector by itself. What it cannot read stays zero, and
/// what it cannot write is not looked at.
void CopySectors(CInputFile& input, COutputFile& output, std::int64_t count, COperation& operation) {
    CDataPiece piece;
    for (std::int64_t sector = 0; sector < count; ++sector) {
        const std::int64_t inPiece = sector % kPieceSectors;
        if (inPiece == 0) {
            piece.Read(input, std::min(kPieceSectors, count - sector));
            piece.KeepUserData();
        }
        output.Write(piece.Data().subspan(static_cast<std::size_t>(inPiece) * kUserDataSize, kUserDataSize));
        ShowUnitDone(operation, sector, count, static_cast<std::uint32_t>(kUserDataSize));
    }
}

void CopyPieces(const std::string& inputPath, CInputFile& input, COutputFile& output, std::int64_t count,
                COperation& operation) {
    const auto pieceCount = static_cast<std::uint32_t>((count + kPieceSectors - 1) / kPieceSectors);
    // One worker: there is next to nothing to do but to read.
    CPiecesAhead<CDataPiece> pieces(
        pieceCount, 1, std::vector<CDataPiece>(kPlaces),
        [&](CDataPiece& piece, std::uint64_t number) {
            piece.Read(input, std::min(kPieceSectors, count - static_cast<std::int64_t>(number) * kPieceSectors));
        },
        [](CDataPiece& piece, std::uint64_t, std::uint32_t) { piece.KeepUserData(); });
    std::int64_t done = 0;
    while (const CDataPiece* piece = pieces.Next()) {
        if (!piece->IsComplete()) {
            operation.Fail("Cannot read " + inputPath);
        }
        if (!output.Write(piece->Data())) {
            operation.Fail(output.FailureText());
        }
        done = std::min(done + kPieceSectors, count);
        ShowStretchDone(operation, done, count);
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
    const std::int64_t size = input.Size();
    if (size < 0) {
        operation.Fail("Cannot read " + request.inputPath);
    }
    const std::int64_t count = size / kRawUnit;
    operation.SetPane(EPane::Status, "Converting bin2iso, please Wait");
    operation.StartProgress(ProgressRange(count), EProgressFill::Dvd);
    input.Seek(0);
    if (request.manner == EOutputManner::InPlace) {
        CopySectors(input, output, count, operation);
    } else {
        CopyPieces(request.inputPath, input, output, count, operation);
    }
    if (!output.Commit() && request.manner != EOutputManner::InPlace) {
        operation.Fail(output.FailureText());  // the window asks neither reading nor writing for its success
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
