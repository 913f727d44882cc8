// The conversion without a second program.
#include <array>
#include <string_view>

#include "files/commit_together.h"
#include "files/input_file.h"
#include "files/path.h"
#include "files/text_output.h"
#include "operation/progress.h"
#include "operation/text.h"
#include "raw/cd_image.h"
#include "raw/cue_sheet.h"
#include "raw/iso_to_bin.h"
#include "raw/sector_expander.h"

namespace vantrel {

namespace {

constexpr std::string_view kCueExtension = ".cue";
constexpr const char* kDoneText = "Conversion iso2bin Done !";

SExpansion ExpansionOf(const SCdImage& found, const std::string& path, COperation& operation) {
    if (const std::int64_t rest = found.length % static_cast<std::int64_t>(kUserDataSize); rest != 0) {
        operation.Fail(Format("%s is not whole sectors of 2048 bytes: %d bytes are left over", path.c_str(),
                              static_cast<int>(rest)));
    }
    const bool postgap = found.NeedsPostgap();
    const std::int64_t sectors =
        found.length / static_cast<std::int64_t>(kUserDataSize) + (postgap ? kRawPostgapSectors : 0);
    if (sectors > kMostRawSectors) {
        operation.Fail(Format("%s is too long for a CD: addresses end at 99:59:74, after %u sectors", path.c_str(),
                              kMostRawSectors));
    }
    return {ESectorMode::Mode2Form1, found.Sectors(), postgap};
}

void OpenOutput(COutputFile& output, const std::string& path, EOutputManner manner, COperation& operation) {
    if (!output.Open(path, manner)) {
        operation.Fail("Cannot create " + path);
    }
}

}  // namespace

std::string CuePathOf(const std::string& binPath) {
    const SPathParts parts = SplitPath(binPath);
    if (EqualIgnoringCase(parts.extension, kCueExtension)) {
        return binPath + std::string(kCueExtension);  // never the raw image itself
    }
    return parts.drive + parts.folder + parts.name + std::string(kCueExtension);
}

void IsoToBinDirectly(const SDirectIsoToBinRequest& request, COperation& operation) {
    operation.SetPane(EPane::Status, "Converting ISO2BIN, please Wait");
    CInputFile image;
    const SCdImage found = ExamineCdImage(request.imagePath, image, operation);
    operation.SetPane(EPane::Bytes, BytesText(found.length));
    const SExpansion expansion = ExpansionOf(found, request.imagePath, operation);
    const std::string binName = FileNameOf(request.binPath);
    if (!CanStandInCueSheet(binName)) {
        operation.Fail("A CUE sheet cannot name the file " + request.binPath);
    }

    COutputFile bin;
    COutputFile cue;
    OpenOutput(bin, request.binPath, request.manner, operation);
    OpenOutput(cue, request.cuePath, request.manner, operation);
    operation.StartProgress(ProgressRange(expansion.AllSectors()), EProgressFill::Dvd);
    const EExpanded result = ExpandSectors(
        image, expansion, bin, [&](std::uint32_t done) { ShowStretchDone(operation, done, expansion.AllSectors()); });
    if (result == EExpanded::ReadFailed) {
        operation.Fail("Cannot read " + request.imagePath);
    }
    std::string failure;
    CTextOutput sheet(cue);
    sheet.Write(CueSheetOf(binName));
    sheet.Flush();
    const std::array<COutputFile*, 2> outputs = {&bin, &cue};
    if (!CommitTogether(outputs, failure)) {
        operation.Fail(failure);
    }
    operation.SetPane(EPane::File, request.binPath);
    operation.SetPane(EPane::Status, kDoneText);
    operation.Complete(kDoneText, [&] { operation.SetPane(EPane::Bytes, BytesText(bin.Size())); });
}

}  // namespace vantrel
