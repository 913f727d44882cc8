// Rebuilds: the fuzzer supplies the layout, the leading structures, the gap file and the listed files.
//
//      8 bits  1: exact, 2: without the gap file, 4: as in the window, 8: with corrected structures
//     then parts: the layout, the leading structures (as patches), the gap file, and for each file its name and content
#include "files/refused.h"
#include "fuzz/input_parts.h"
#include "fuzz/invariants.h"
#include "fuzz/patched_image.h"
#include "image/inspect/layout_report.h"
#include "iml/layout/gap_file.h"
#include "iml/layout/layout_names.h"
#include "iml/rebuild/rebuild.h"

namespace vantrel::fuzz {

namespace {

constexpr std::int64_t kCapacity = 8 << 20U;
constexpr int kMaxFiles = 16;
const std::string kLayout = std::string(kFolder) + "game.iml";
const std::string kGaps = std::string(kFolder) + "game.gaps";

void PutFiles(CInputParts parts, bool withGaps) {
    ClearDisk(kCapacity);
    PutFile(kLayout, parts.Part());
    PutFile(LeadingPathOf(kLayout), PatchedImage(parts.Part()));
    const std::span<const std::uint8_t> gaps = parts.Part();
    if (withGaps) {
        PutFile(kGaps, gaps);
    }
    for (int i = 0; i < kMaxFiles && !parts.IsEmpty(); ++i) {
        const std::string name = TextOf(parts.Part());
        PutFile(kFolder + (name.empty() ? "A" : name), parts.Part());
    }
}

void RebuildInWindow() {
    CSilentOperation operation;
    EndingOf([&] { RebuildImage(WindowRebuild(kFolder, "game.iml"), operation); });
}

void RebuildStrictly(ERebuildRule rule) {
    CSilentOperation operation;
    SRebuildRequest request;
    request.layoutPath = kLayout;
    request.leadingPath = LeadingPathOf(kLayout);
    request.gapsPath = kGaps;
    request.outputPath = std::string(kFolder) + "new.iso";
    request.manner = EOutputManner::CommitReplace;
    request.strict = true;
    request.filesFolder = kFolder;
    request.rule = rule;
    const auto before = WholeDisk();
    if (CompletesOrLeavesNothing([&] { RebuildImage(request, operation); })) {
        const Bytes image = ContentOf(request.outputPath);
        Expect(!image.empty(), "a rebuilt image has leading structures");
        auto after = WholeDisk();
        after.erase(request.outputPath);
        auto others = before;
        others.erase(request.outputPath);
        Expect(after == others, "a rebuild writes nothing but its image");
        CompletesOrLeavesNothing([&] { RebuildImage(request, operation); });
        Expect(ContentOf(request.outputPath) == image, "a second rebuild writes the same image");
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
        Expect(area.position >= end && area.length >= 0 && area.position + area.length <= gaps.Origin().image.length,
               "areas ascend, do not overlap and lie within the image");
        end = area.position + area.length;
        gaps.ReadAt(i, area.length / 2, bytes);
    }
}

void Report() {
    try {
        ReportOnLayout(kLayout);
        VerifyLayout(kLayout);
    } catch (const CRefused&) {
        // not a readable layout
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
    RebuildStrictly((flags & 1U) != 0   ? vantrel::ERebuildRule::Exact
                    : (flags & 8U) != 0 ? vantrel::ERebuildRule::Edited
                                        : vantrel::ERebuildRule::LikeWindow);
    return 0;
}
