#include "raw/bin_to_iso.h"

#include <algorithm>
#include <array>
#include <span>

#include "files/checked_file.h"
#include "files/path.h"
#include "operation/progress.h"
#include "raw/raw_sector.h"
#include "raw/track_to_iso.h"

namespace vantrel {

namespace {

bool StartsWithMode2Sector(CInputFile& input) {
    std::array<std::uint8_t, kHeaderEnd> header = {};
    input.ReadAt(0, header);
    return std::equal(kSync.begin(), kSync.end(), header.begin()) && header[kModeOffset] == kMode2;
}

/// Converts for the window: only the first sector is examined, bytes that cannot be read become zeros, and writes are
/// not checked.
void ConvertUnchecked(const SBinToIsoRequest& request, CCheckedInput& input, COperation& operation) {
    CCheckedOutput output(operation);
    output.OpenOrFail(request.outputPath, request.manner, "Code 2021 - Error Opening %s");
    operation.SetPane(EPane::File, request.inputPath);
    if (!StartsWithMode2Sector(input)) {
        operation.Fail("Error bin image => MODE 2 only !");
    }
    const std::int64_t sectors = input.SizeOrFail() / static_cast<std::int64_t>(kRawSectorSize);
    operation.SetPane(EPane::Status, "Converting bin2iso, please Wait");
    CProgress progress(operation, sectors);
    input.Seek(0);
    std::array<std::uint8_t, kRawSectorSize> sector = {};
    for (std::int64_t i = 0; i < sectors; ++i) {
        const std::size_t count = input.Read(sector);
        std::fill(sector.begin() + static_cast<std::ptrdiff_t>(count), sector.end(), std::uint8_t{0});
        output.Write(std::span(sector).subspan<kForm1DataOffset, kUserDataSize>());
        progress.AdvanceWithBytes(static_cast<std::uint32_t>(kUserDataSize));
    }
    output.Commit();
}

}  // namespace

SBinToIsoRequest WindowBinToIso(const std::string& folder, const std::string& fileName) {
    return {folder + fileName, folder + "new-" + BaseNameOf(fileName) + ".iso"};
}

void BinToIso(const SBinToIsoRequest& request, COperation& operation) {
    operation.Begin(EConversion::BinToIso);
    CCheckedInput input(operation);
    input.OpenOrFail(request.inputPath, "Code 2011 - Error Opening %s");
    if (request.strict) {
        ConvertDataTrack(request, operation);
    } else {
        ConvertUnchecked(request, input, operation);
    }
    input.Close();
    operation.SetPane(EPane::File, request.outputPath);
    operation.SetPane(EPane::Status, "Converted bin2iso done !");
    operation.Complete("Conversion bin2iso Done !");
}

}  // namespace vantrel
