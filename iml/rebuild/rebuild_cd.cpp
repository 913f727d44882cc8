// Rebuilds CD and UMD images.
#include "iml/rebuild/file_placing.h"
#include "iml/rebuild/image_writer.h"
#include "iml/rebuild/layout_pass.h"
#include "iml/rebuild/rebuild.h"
#include "iso/postgap.h"
#include "iso/volume.h"

namespace vantrel {

namespace {

constexpr const char* kDoneText = "Rebuilding [cd] ISO done added postgap!";

void PlaceFiles(const CPlacements& placements, CImageWriter& writer, COperation& operation) {
    CFilePlacing placing(writer, operation);
    for (std::size_t i = 0; i < placements.Files().size(); ++i) {
        const SPlacement& file = placements.Files()[i];
        placing.Show(file);
        // The product has 32 bits and wraps at 4 GiB.
        writer.Seek(static_cast<std::uint32_t>(file.first * kSectorSize));
        placing.Place(file, placements.GapBehind(i));
    }
}

}  // namespace

void RebuildCdImage(const SRebuildRequest& request, COperation& operation) {
    CPlacements placements(request, operation);
    CLayoutPass pass(request, kCdShape, placements, operation);
    pass.Run();
    CImageWriter writer(request, placements, operation);
    writer.Begin(0, pass.LeadingLast());
    const bool takesPostgap = KindBySystem(ReadPrimaryVolume(writer.Leading())) == ImageKind::Cd;
    writer.BeginPlacing();
    // The total has room for a postgap in any case.
    writer.StartProgress(placements.SectorBehindLast() + kPostgapSectors);
    writer.WriteGap(placements.FirstSector() - writer.LeadingLength() / kSectorSize);
    PlaceFiles(placements, writer, operation);
    if (takesPostgap) {
        writer.Seek(writer.Output().Size());
        writer.WriteGap(kPostgapSectors);
    }
    writer.CorrectVolumeSize();
    if (takesPostgap) {
        writer.Seek(writer.Output().Size() - kPostgapSectors * kSectorSize);
        writer.Write(kPostgapMark);
    }
    operation.SetPane(EPane::Percent, "100%");
    writer.Finish(kDoneText, kDoneText);
}

}  // namespace vantrel
