// Plain images, for everything that reads them except the export: reports, verification, extraction, the postgap
// commands, and the conversions to BIN, CSO and DAX, which must be reversible.
//
//      8 bits  remainder of a division by 6: which of these; quotient: the compression level
//     then the image, as patches
#include <algorithm>

#include "compress/cso.h"
#include "compress/dax.h"
#include "files/input_file.h"
#include "files/refused.h"
#include "fuzz/input_parts.h"
#include "fuzz/invariants.h"
#include "fuzz/patched_image.h"
#include "image/form.h"
#include "image/inspect/image_report.h"
#include "image/inspect/verify.h"
#include "iso/contents.h"
#include "iso/extraction.h"
#include "iso/iso9660.h"
#include "iso/postgap.h"
#include "raw/bin_to_iso.h"
#include "raw/iso_to_bin.h"
#include "raw/sector_check.h"

namespace vantrel::fuzz {

namespace {

constexpr std::int64_t kCapacity = 8 << 20U;
constexpr auto kSector = static_cast<std::size_t>(kSectorSize);
constexpr std::uint32_t kWorkers = 2;
const std::string kImage = std::string(kFolder) + "game.iso";
const std::string kConverted = std::string(kFolder) + "converted";
const std::string kAgain = std::string(kFolder) + "again.iso";

void Begin(const Bytes& image) {
    ClearDisk(kCapacity);
    PutFile(kImage, image);
}

void Report(const Bytes& image) {
    Begin(image);
    CInputFile file;
    file.Open(kImage);
    ReportOnImage(file);
    CSilentOperation operation;
    try {
        const CReport report = VerifyFile(kImage, operation);
        Expect(report["form"] == NameOf(EForm::Iml) || report.Find("image"), "a plain image has checksums");
        Expect(CompareImages(kImage, kImage, operation)["ok"] == true, "an image equals itself");
    } catch (const CRefused&) {
        // not marked as ISO 9660
    }
}

void Extract(const Bytes& image) {
    Begin(image);
    CInputFile file;
    file.Open(kImage);
    std::vector<SExtractedFile> files;
    for (const SContentFile& found : ReadContents(file).files) {
        std::string path = found.path;
        std::replace(path.begin(), path.end(), '/', '\\');
        files.push_back({found.extents, path});
    }
    const SExtractionRequest request = {kImage, {kImage}, std::string(kFolder) + "files/", EOutputManner::CommitNew,
                                        {},     {}};
    CSilentOperation operation;
    const bool completed = CompletesOrLeavesNothing([&] {
        CExtraction extraction(request, file, files, operation);
        extraction.Check();
        extraction.Write();
        extraction.Commit();
    });
    for (const SExtractedFile& extracted : files) {
        std::string path = extracted.path;
        std::replace(path.begin(), path.end(), '\\', '/');
        Bytes expected;
        for (const SExtent& extent : completed ? extracted.extents : std::vector<SExtent>()) {
            expected.insert(expected.end(), image.begin() + extent.Position(), image.begin() + extent.End());
        }
        Expect(!completed || ContentOf(request.folder + path) == expected,
               "an extracted file has the bytes of the image");
    }
}

void CheckPostgaps(const Bytes& image, int sectors) {
    CSilentOperation operation;
    Begin(image);
    EndingOf([&] { CheckPostgap({kImage, EUpdateManner::ReadOnly, true}, operation); });
    Expect(ContentOf(kImage) == image, "a dry run changes nothing");
    SPostgapRequest request = {kImage, EUpdateManner::UndoUnlessCommitted, true, sectors};
    const bool isAccepted = CompletesOrLeavesNothing([&] { CheckPostgap(request, operation); });
    const Bytes strict = ContentOf(kImage);
    CompletesOrLeavesNothing([&] { CheckPostgap(request, operation); });
    Expect(ContentOf(kImage) == strict, "a second check changes nothing");
    Begin(image);
    EndingOf([&] { CheckPostgap({kImage, EUpdateManner::InPlace}, operation); });
    Expect(!isAccepted || ContentOf(kImage) == strict, "window and console program append the same postgap");
    CompletesOrLeavesNothing([&] { AddSelectivePostgap(request, operation); });
    request.manner = EUpdateManner::InPlace;
    request.strict = false;
    EndingOf([&] { AddSelectivePostgap(request, operation); });
}

void ConvertToBin(const Bytes& image) {
    Begin(image);
    CSilentOperation operation;
    const SIsoToBinRequest request = {kImage, kConverted + ".bin", kConverted + ".cue", EOutputManner::CommitNew};
    if (!CompletesOrLeavesNothing([&] { IsoToBin(request, operation); })) {
        return;
    }
    const Bytes bin = ContentOf(request.binPath);
    for (std::size_t i = 0; i < bin.size() / kRawSectorSize; ++i) {
        const auto sector = std::span(bin).subspan(i * kRawSectorSize).first<kRawSectorSize>();
        Expect(!CheckSector(sector, static_cast<std::uint32_t>(i)).Any(), "raw sectors have no faults");
    }
    Bytes wanted = image;
    wanted.resize(bin.size() / kRawSectorSize * kSector);
    Expect(wanted.size() == image.size() ||
               wanted.size() == image.size() + static_cast<std::size_t>(kPostgapSectors) * kSector,
           "the raw image has the image's sectors, and perhaps a postgap");
    Expect(!EndingOf([&] {
        BinToIso({request.binPath, kAgain, EOutputManner::InPlace}, operation);
    }),
           "the raw image can be converted back");
    Expect(ContentOf(kAgain) == wanted, "the conversion back restores the image");
}

using Conversion = void (*)(const SCompressionRequest&, COperation&);

void Compress(const Bytes& image, int level, Conversion compress, Conversion expand) {
    Begin(image);
    CSilentOperation operation;
    const SCompressionRequest there = DirectConversion(kImage, kConverted, EOutputManner::CommitNew, kWorkers, level);
    if (!CompletesOrLeavesNothing([&] { compress(there, operation); })) {
        return;
    }
    const SCompressionRequest back = DirectConversion(kConverted, kAgain, EOutputManner::CommitNew, kWorkers, level);
    const std::optional<std::string> ending = EndingOf([&] { expand(back, operation); });
    Expect(!ending, ("a compressed image can be expanded, without \"" + ending.value_or("") + '"').c_str());
    Expect(ContentOf(kAgain) == image, "the expansion restores the image");
}

}  // namespace

}  // namespace vantrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel::fuzz;
    CInputParts parts({data, size});
    const std::uint8_t choice = parts.Byte();
    const int level = choice / 6 % 9 + 1;
    const Bytes image = PatchedImage(parts.Rest());
    switch (choice % 6) {
        case 0:
            Report(image);
            break;
        case 1:
            Extract(image);
            break;
        case 2:
            CheckPostgaps(image, level);
            break;
        case 3:
            ConvertToBin(image);
            break;
        case 4:
            Compress(image, level, vantrel::IsoToCso, vantrel::CsoToIso);
            break;
        default:
            Compress(image, level, vantrel::IsoToDax, vantrel::DaxToIso);
    }
    return 0;
}
