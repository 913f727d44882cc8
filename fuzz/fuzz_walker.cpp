// Exports: the walk through the directories, the layout, its side files and the gap file. A rebuild from an export with
// all files must restore the image.
//
//      8 bits  1: with a folder before every path, 2: as in the console program and with the files, instead of the
//      window
//     then the image, as patches
#include <optional>

#include "files/refused.h"
#include "fuzz/input_parts.h"
#include "fuzz/invariants.h"
#include "fuzz/patched_image.h"
#include "iml/export/export.h"
#include "iml/layout/layout_names.h"
#include "iml/layout/layout_summary.h"
#include "iml/rebuild/rebuild.h"
#include "iso/volume.h"

namespace vantrel::fuzz {

namespace {

constexpr std::int64_t kCapacity = 8 << 20U;
const std::string kImage = std::string(kFolder) + "game.iso";
const std::string kLayout = std::string(kFolder) + "game.iml";

SLayoutTime NoTime() {
    return {};
}

void ExportInWindow(const Bytes& image, const std::string& folderText) {
    ClearDisk(kCapacity);
    PutFile(kImage, image);
    CSilentOperation operation;
    const auto choose = [&] { return std::optional(SChosenLayout{kLayout, folderText}); };
    if (EndingOf([&] { IsoToIml(kFolder, "game.iso", choose, operation, NoTime); })) {
        return;
    }
    Expect(ContentOf(kImage) == image, "an export does not touch the image");
    try {
        Expect(SummarizeLayout(kLayout, kFolder).leadingFound, "an export has its leading structures");
    } catch (const CRefused&) {
        // a medium that layouts cannot express
    }
    CSilentOperation rebuilding;
    EndingOf([&] { RebuildImage(WindowRebuild(kFolder, "game.iml"), rebuilding); });
}

bool ExportWithFiles(const Bytes& image) {
    ClearDisk(kCapacity);
    PutFile(kImage, image);
    CSilentOperation operation;
    SExportRequest request;
    request.imagePath = kImage;
    request.layoutPath = kLayout;
    request.extractionFolder = kFolder;
    request.clock = NoTime;
    return CompletesOrLeavesNothing([&] { ExportImage(request, operation); });
}

void RebuildTheSame(const Bytes& image) {
    CSilentOperation operation;
    SRebuildRequest request;
    request.layoutPath = kLayout;
    request.leadingPath = LeadingPathOf(kLayout);
    request.gapsPath = GapPathOf(kLayout);
    request.outputPath = std::string(kFolder) + "again.iso";
    request.manner = EOutputManner::CommitNew;
    request.filesFolder = kFolder;
    request.strict = true;
    request.rule = ERebuildRule::Exact;
    const std::optional<std::string> ending = EndingOf([&] { RebuildImage(request, operation); });
    Expect(!ending, ("an export can be rebuilt, without \"" + ending.value_or("") + '"').c_str());
    Expect(ContentOf(request.outputPath) == image, "the rebuild restores the image");
}

bool IsOfKnownMedium(const Bytes& image) {
    PutFile(kImage, image);
    CInputFile file;
    file.Open(kImage);
    return KindByApplication(ReadPrimaryVolume(file)) != ImageKind::Unknown;
}

}  // namespace

}  // namespace vantrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel::fuzz;
    CInputParts parts({data, size});
    const std::uint8_t flags = parts.Byte();
    const Bytes image = PatchedImage(parts.Rest());
    if ((flags & 2U) == 0) {
        ExportInWindow(image, (flags & 1U) != 0 ? "C:\\games\\100%s\\" : "");
    } else if (ExportWithFiles(image) && IsOfKnownMedium(image)) {
        RebuildTheSame(image);
    }
    return 0;
}
