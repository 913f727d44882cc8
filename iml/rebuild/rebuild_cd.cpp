// Rebuilding of CD and UMD images.
#include <array>

#include "iml/rebuild/exact_rebuild.h"
#include "iml/rebuild/file_placing.h"
#include "iml/image_kind.h"
#include "iml/rebuild/image_writer.h"
#include "iml/rebuild/layout_pass.h"
#include "iso/postgap.h"
#include "iml/rebuild/rebuild.h"

namespace vantrel {

namespace {

constexpr const char* kDoneText = "Rebuilding [cd] ISO done added postgap!";

ImageKind KindOf(CInputFile& leading) {
    std::array<std::uint8_t, 1> system = {};
    std::array<std::uint8_t, 1> mark = {};
    leading.ReadAt(kSystemIdentifierSecond, system);
    leading.ReadAt(kXaMarkFirst, mark);
    return ImageKindOf(system[0], mark[0]);
}

void PlaceFiles(CSideLists& lists, std::int64_t count, CImageWriter& writer, COperation& operation) {
    CFilePlacing placing(writer, operation, writer.LeadingLength());
    CLineBuffer line;
    for (std::int64_t i = 0; i < count; ++i) {
        const auto file = lists.Next(line);
        if (!file) {
            break;
        }
        placing.Show(*file);
        // The product has 32 bits, so it wraps at 4 GiB.
        const std::uint32_t position = file->first * static_cast<std::uint32_t>(kImageSector);
        writer.Seek(position);
        placing.Place(*file);
    }
}

}  // namespace

void RebuildCdImage(const SRebuildRequest& request, COperation& operation) {
    CSideLists lists(request.entryListPath, request.boundsPath, SidePlaceOf(request));
    CLayoutPass pass(request, kCdRules, lists, operation);
    pass.Run();
    if (request.exact) {
        RebuildExactly(request, pass, lists, operation);
        return;
    }
    CImageWriter writer(request, operation);
    writer.Begin(0, pass.LeadingLast());
    const bool takesPostgap = KindOf(writer.Leading()) == ImageKind::Cd;
    writer.BeginPlacing(lists);
    // The bar has room for a postgap whether one follows or not.
    writer.StartProgress(static_cast<std::int64_t>(lists.SectorBehindLast()) + kPostgapSectors, EProgressFill::Cd);
    writer.WriteGap(lists.FirstSector() - writer.LeadingLength() / kImageSector);
    PlaceFiles(lists, pass.Announced(), writer, operation);
    if (takesPostgap) {
        writer.Seek(writer.Output().Size());
        writer.WriteGap(kPostgapSectors);
    }
    writer.CorrectVolumeSize();
    if (takesPostgap) {
        writer.Seek(writer.Output().Size() - kPostgapSectors * kImageSector);
        writer.Write(kPostgapMark);
    }
    operation.SetPane(EPane::Percent, "100%");
    writer.Finish(lists, kDoneText, kDoneText);
}

}  // namespace vantrel
