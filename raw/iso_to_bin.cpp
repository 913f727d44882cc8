#include "raw/iso_to_bin.h"

#include <array>
#include <string_view>

#include "files/commit_together.h"
#include "files/path.h"
#include "files/text_output.h"
#include "iso/volume.h"
#include "operation/text.h"
#include "raw/cd_image.h"
#include "raw/cue_sheet.h"
#include "raw/sector_expander.h"

namespace vantrel {

namespace {

constexpr std::string_view kCueExtension = ".cue";

void WriteSheet(COutputFile& cue, const std::string& binName) {
    CTextOutput sheet(cue);
    sheet.Write(CueSheetOf(binName));
    sheet.Flush();
}

/// Whether the image lacks exactly its postgap. Gives a notice if it lacks anything else.
bool NeedsPostgap(const std::string& path, const SCdImage& image, COperation& operation) {
    if (PostgapStateOf(image.length / kSectorSize, image.VolumeSectors()) == EPostgapState::Missing) {
        return true;
    }
    if (const std::string notice = TruncationNotice(path, image.length, image.volume); !notice.empty()) {
        operation.Notify(notice);
    }
    return false;
}

void FailUnlessWholeSectors(const std::string& path, std::int64_t length, COperation& operation) {
    if (const std::int64_t rest = length % kSectorSize; rest != 0) {
        operation.Fail(Format("%s is not whole sectors of 2048 bytes: %d bytes are left over", path.c_str(),
                              static_cast<int>(rest)));
    }
}

/// Writes raw image and sheet, which appear together or not at all.
void WriteBin(const SIsoToBinRequest& request, CCheckedInput& image, const SExpansion& expansion,
              COperation& operation) {
    const std::string binName = FileNameOf(request.binPath);
    if (!CanStandInCueSheet(binName)) {
        operation.Fail("A CUE sheet cannot name the file " + request.binPath);
    }
    CCheckedOutput bin(operation);
    CCheckedOutput cue(operation);
    bin.OpenOrFail(request.binPath, request.manner, "Cannot create %s");
    cue.OpenOrFail(request.cuePath, request.manner, "Cannot create %s");
    ExpandSectors(image, expansion, bin, operation, request.workers);
    WriteSheet(cue, binName);
    if (request.checkOutput) {
        bin.FinishOrFail();
        request.checkOutput(bin);
    }
    std::string problem;
    const std::array<COutputFile*, 2> outputs = {&bin, &cue};
    if (!CommitTogether(outputs, problem)) {
        operation.Fail(problem);
    }
    operation.SetPane(EPane::File, request.binPath);
    operation.SetPane(EPane::Status, request.doneText);
    operation.Complete(request.doneText, [&] { operation.SetPane(EPane::Bytes, BytesText(bin.Size())); });
}

}  // namespace

std::string CuePathOf(const std::string& binPath) {
    const SPathParts parts = SplitPath(binPath);
    if (EqualIgnoringCase(parts.extension, kCueExtension)) {
        return binPath + std::string(kCueExtension);  // never the raw image itself
    }
    return parts.drive + parts.folder + parts.name + std::string(kCueExtension);
}

void IsoToBin(const SIsoToBinRequest& request, COperation& operation) {
    operation.Begin(EConversion::IsoToBin);
    operation.SetPane(EPane::Status, "Converting ISO2BIN, please Wait");
    CCheckedInput image(operation);
    const SCdImage found = ExamineCdImage(request.imagePath, image, operation, request.image);
    operation.SetPane(EPane::Bytes, BytesText(found.length));
    FailUnlessWholeSectors(request.imagePath, found.length, operation);
    const bool postgap = NeedsPostgap(request.imagePath, found, operation);
    WriteBin(request, image, PlanExpansion(image, ESectorMode::Mode2Form1, postgap, operation), operation);
}

void ImageToBin(const SIsoToBinRequest& request, COperation& operation) {
    CCheckedInput image(operation);
    image.AttachOrOpen(request.image, request.imagePath, "Cannot open %s");
    FailUnlessWholeSectors(request.imagePath, image.SizeOrFail(), operation);
    WriteBin(request, image, PlanExpansion(image, ESectorMode::Mode2Form1, false, operation), operation);
}

}  // namespace vantrel
