#include "raw/bin_to_iso.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "files/checked_file.h"
#include "files/path.h"
#include "operation/progress.h"
#include "operation/text.h"
#include "pipeline/ordered_pipeline.h"
#include "raw/raw_sector.h"

namespace vantrel {

namespace {

/// Sectors that are read at once.
constexpr std::int64_t kPieceSectors = 256;
constexpr auto kRawUnit = static_cast<std::int64_t>(kRawSectorSize);

/// Work is shared with a second thread only in a strict conversion. One worker is enough, because most of the time goes
/// into reading.
constexpr std::uint32_t kStrictWorkers = 1;
constexpr std::size_t kStrictSlots = 6;

/// The user data of consecutive raw sectors. Bytes that cannot be read are zero.
class CDataPiece {
public:
    /// Reads raw sectors at the current position of the input.
    void Read(CInputFile& input, std::int64_t sectors) {
        m_sectors = static_cast<std::size_t>(sectors);
        const auto wanted = std::span(m_bytes).first(m_sectors * kRawSectorSize);
        const std::size_t count = input.Read(wanted);
        m_complete = count == wanted.size();
        std::fill(wanted.begin() + static_cast<std::ptrdiff_t>(count), wanted.end(), std::uint8_t{0});
    }

    /// Moves the user data of the sectors to the beginning of the buffer.
    void KeepUserData() {
        for (std::size_t i = 0; i < m_sectors; ++i) {
            std::copy_n(m_bytes.data() + i * kRawSectorSize + kForm1DataOffset, kUserDataSize,
                        m_bytes.data() + i * kUserDataSize);
        }
    }

    bool IsComplete() const { return m_complete; }
    std::size_t Sectors() const { return m_sectors; }
    std::span<const std::uint8_t> Data() const { return std::span(m_bytes).first(m_sectors * kUserDataSize); }

private:
    std::vector<std::uint8_t> m_bytes = std::vector<std::uint8_t>(kPieceSectors * kRawUnit);
    std::size_t m_sectors = 0;
    bool m_complete = true;
};

bool StartsWithMode2Sector(CInputFile& input) {
    std::array<std::uint8_t, kHeaderEnd> header = {};
    input.ReadAt(0, header);
    return std::equal(kSync.begin(), kSync.end(), header.begin()) && header[kModeOffset] == kMode2;
}

/// Writes sector by sector, without looking at the result, and shows each of them.
void WriteSectors(const CDataPiece& piece, COutputFile& output, CProgress& progress) {
    for (std::size_t i = 0; i < piece.Sectors(); ++i) {
        output.Write(piece.Data().subspan(i * kUserDataSize, kUserDataSize));
        progress.AdvanceWithBytes(static_cast<std::uint32_t>(kUserDataSize));
    }
}

/// Copies the user data of `count` sectors. Returns false if a strict conversion cannot read all of them; only then is
/// no other thread using the input any more.
bool CopyUserData(CInputFile& input, std::int64_t count, bool strict, CCheckedOutput& output, CProgress& progress) {
    const std::int64_t pieceCount = (count + kPieceSectors - 1) / kPieceSectors;
    COrderedPipeline<CDataPiece> pieces(
        static_cast<std::uint64_t>(pieceCount), strict ? kStrictWorkers : 0,
        std::vector<CDataPiece>(strict ? kStrictSlots : 1),
        [&](CDataPiece& piece, std::uint64_t number) {
            piece.Read(input, std::min(kPieceSectors, count - static_cast<std::int64_t>(number) * kPieceSectors));
        },
        [](CDataPiece& piece, std::uint64_t, std::uint32_t) { piece.KeepUserData(); });
    while (const CDataPiece* piece = pieces.Next()) {
        if (!strict) {
            WriteSectors(*piece, output, progress);
            continue;
        }
        if (!piece->IsComplete()) {
            return false;
        }
        output.WriteOrFail(piece->Data());
        progress.Advance(static_cast<std::int64_t>(piece->Sectors()));
    }
    return true;
}

/// Closes the output and reports the bytes of a partial last sector if the conversion is strict.
void Finish(const SBinToIsoRequest& request, std::int64_t rest, CCheckedOutput& output, COperation& operation) {
    if (!request.strict) {
        output.Commit();
        return;
    }
    output.CommitOrFail();
    if (rest != 0) {
        operation.Notify(Format("%s: the last %d bytes are no whole sector and were left out",
                                request.inputPath.c_str(), static_cast<int>(rest)));
    }
}

}  // namespace

SBinToIsoRequest WindowBinToIso(const std::string& folder, const std::string& fileName) {
    return {folder + fileName, folder + "new-" + BaseNameOf(fileName) + ".iso"};
}

void BinToIso(const SBinToIsoRequest& request, COperation& operation) {
    operation.Begin(EConversion::BinToIso);
    CCheckedInput input(operation);
    CCheckedOutput output(operation);
    input.OpenOrFail(request.inputPath, "Code 2011 - Error Opening %s");
    output.OpenOrFail(request.outputPath, request.manner, "Code 2021 - Error Opening %s");
    operation.SetPane(EPane::File, request.inputPath);
    if (!StartsWithMode2Sector(input)) {
        operation.Fail("Error bin image => MODE 2 only !");
    }
    const std::int64_t size = input.SizeOrFail();
    operation.SetPane(EPane::Status, "Converting bin2iso, please Wait");
    CProgress progress(operation, size / kRawUnit);
    input.Seek(0);
    if (!CopyUserData(input, size / kRawUnit, request.strict, output, progress)) {
        input.FailIncomplete();
    }
    Finish(request, size % kRawUnit, output, operation);
    input.Close();
    operation.SetPane(EPane::File, request.outputPath);
    operation.SetPane(EPane::Status, "Converted bin2iso done !");
    operation.Complete("Conversion bin2iso Done !");
}

}  // namespace vantrel
