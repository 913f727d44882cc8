// Rebuilding of images: layout, leading structures, gap file and the loose files are all the fuzzer's.
//
//      8 bits  1: exact, 2: without the gap file, 4: in the window's way instead
//     then parts: the layout, the leading structures (as patches), the gap file, and for each file its name and content
#include "image/inspect/layout_report.h"
#include "console/refused.h"
#include "fuzz/invariants.h"
#include "fuzz/input_parts.h"
#include "fuzz/patched_image.h"
#include "iml/layout/gap_file.h"
#include "iml/export/layout_writer.h"
#include "iml/rebuild/rebuild.h"

namespace vantrel::fuzz {

namespace {

constexpr std::int64_t kRoom = 8 << 20U;
constexpr int kMostFiles = 16;
const std::string kLayout = std::string(kFolder) + "game.iml";
const std::string kGaps = std::string(kFolder) + "game.gaps";

void PutFiles(CInputParts parts, bool withGaps) {
    ClearDisk(kRoom);
    PutFile(kLayout, parts.Part());
    PutFile(LeadingPathOf(kLayout), PatchedImage(parts.Part()));
    const std::span<const std::uint8_t> gaps = parts.Part();
    if (withGaps) {
        PutFile(kGaps, gaps);
    }
    for (int i = 0; i < kMostFiles && !parts.IsEmpty(); ++i) {
        const std::string name = TextOf(parts.Part());
        PutFile(kFolder + (name.empty() ? "A" : name), parts.Part());
    }
}

void RebuildInWindow() {
    CSilentOperation operation;
    EndingOf([&] { Vantrel(WindowRebuild(kFolder, "game.iml"), operation); });
}

void RebuildCarefully(bool exact) {
    CSilentOperation operation;
    SRebuildRequest request;
    request.layoutPath = kLayout;
    request.leadingPath = LeadingPathOf(kLayout);
    request.gapsPath = kGaps;
    request.outputPath = std::string(kFolder) + "new.iso";
    request.manner = EOutputManner::CommitReplace;
    request.filesFolder = kFolder;
    request.exact = exact;
    const auto before = WholeDisk();
    if (CompletesOrLeavesNothing([&] { Vantrel(request, operation); })) {
        const Bytes image = ContentOf(request.outputPath);
        Expect(!image.empty(), "a rebuilt image has leading structures");
        auto after = WholeDisk();
        after.erase(request.outputPath);
        auto others = before;
        others.erase(request.outputPath);
        Expect(after == others, "a rebuild writes nothing but its image");
        CompletesOrLeavesNothing([&] { Vantrel(request, operation); });
        Expect(ContentOf(request.outputPath) == image, "the same files give the same image");
    }
}

void ReadGaps() {
    CGapFileReader gaps;
    if (!gaps.Open(kGaps)) {
        Expect(!gaps.Problem().empty(), "a gap file is refused with a reason");
        return;
    }
    std::int64_t end = 0;
    Bytes bytes(4096);
    for (std::size_t i = 0; i < gaps.Areas().size(); ++i) {
        const SImageArea& area = gaps.Areas()[i];
        Expect(area.position >= end && area.length >= 0 && area.position + area.length <= gaps.ImageLength(),
               "areas ascend, do not overlap and lie in the image");
        end = area.position + area.length;
        gaps.ReadAt(i, area.length / 2, bytes);
    }
}

void Report() {
    try {
        ReportOnLayout(kLayout).dump(2, ' ', false, vantrel::Report::error_handler_t::replace);
        VerifyLayout(kLayout).dump(2, ' ', false, vantrel::Report::error_handler_t::replace);
    } catch (const CRefused&) {
        // no layout
    }
}

}  // namespace

}  // namespace vantrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel::fuzz;
    CInputParts parts({data, size});
    const std::uint8_t flags = parts.Byte();
    PutFiles(parts, (flags & 2U) == 0);
    if ((flags & 4U) != 0) {
        RebuildInWindow();
        return 0;
    }
    Report();
    ReadGaps();
    RebuildCarefully((flags & 1U) != 0);
    return 0;
}
