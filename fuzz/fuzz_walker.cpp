// Export of images: the walk through the directories, the layout, its side files and the gap file. Whatever could be
// exported with its files gives back the very image.
//
//      8 bits  1: with a folder in front of every path, 2: without questions and with the files, instead of the
//      window's way
//     then the image, as patches
#include <optional>

#include "fuzz/invariants.h"
#include "fuzz/input_parts.h"
#include "fuzz/patched_image.h"
#include "iml/export/export.h"
#include "iml/layout/gap_file.h"
#include "iml/layout/layout_summary.h"
#include "iml/export/layout_writer.h"
#include "iml/rebuild/rebuild.h"
#include "iso/volume.h"

namespace vantrel::fuzz {

namespace {

constexpr std::int64_t kRoom = 8 << 20U;
const std::string kImage = std::string(kFolder) + "game.iso";
const std::string kLayout = std::string(kFolder) + "game.iml";

SLocalTime NoTime() {
    return {};
}

void ExportInWindow(const Bytes& image, const std::string& folderText) {
    ClearDisk(kRoom);
    PutFile(kImage, image);
    CSilentOperation operation;
    const auto choose = [&] { return std::optional(SChosenLayout{kLayout, folderText}); };
    if (EndingOf([&] { IsoToIml(kFolder, "game.iso", choose, operation, NoTime); })) {
        return;
    }
    Expect(ContentOf(kImage) == image, "an export does not touch the image");
    std::string problem;
    const std::optional<SLayoutSummary> summary = SummarizeLayout(kLayout, kFolder, problem);
    Expect(summary || !problem.empty(), "a layout is refused with a reason");
    Expect(!summary || summary->leadingFound, "an export has its leading structures");
    CSilentOperation rebuilding;
    EndingOf([&] { Vantrel(WindowRebuild(kFolder, "game.iml"), rebuilding); });
}

bool ExportWithFiles(const Bytes& image) {
    ClearDisk(kRoom);
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
    request.exact = true;
    const std::optional<SEnded> ended = EndingOf([&] { Vantrel(request, operation); });
    if (ended) {
        std::fprintf(stderr, "the rebuild said: %s\n", ended->text.c_str());
    }
    Expect(!ended, "what was exported can be rebuilt");
    Expect(ContentOf(request.outputPath) == image, "the rebuilt image is the exported one");
}

bool IsOfKnownMedium(const Bytes& image) {
    PutFile(kImage, image);
    CInputFile file;
    file.Open(kImage);
    return MediaOf(MediaKeyOf(ReadPrimaryVolume(file))) != EMedia::Unknown;
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
