// Plain images, for all that reads them besides the export: reports, verification, extraction, the postgap commands,
// and the conversions to BIN, CSO and DAX, each of which has to give back the image.
//
//      8 bits  remainder of a division by 6: which of these; quotient: the compression level
//     then the image, as patches
#include <algorithm>

#include "compress/cso.h"
#include "compress/dax.h"
#include "image/inspect/image_report.h"
#include "console/refused.h"
#include "image/inspect/verify.h"
#include "iso/extraction.h"
#include "files/input_file.h"
#include "fuzz/invariants.h"
#include "fuzz/input_parts.h"
#include "fuzz/patched_image.h"
#include "iso/contents.h"
#include "iso/postgap.h"
#include "raw/bin_to_iso.h"
#include "raw/iso_to_bin.h"
#include "raw/sector_check.h"

namespace vantrel::fuzz {

namespace {

constexpr std::int64_t kRoom = 8 << 20U;
constexpr std::size_t kSector = 2048;
constexpr std::uint32_t kWorkers = 2;
const std::string kImage = std::string(kFolder) + "game.iso";
const std::string kConverted = std::string(kFolder) + "converted";
const std::string kAgain = std::string(kFolder) + "again.iso";

void Begin(const Bytes& image) {
    ClearDisk(kRoom);
    PutFile(kImage, image);
}

void Report(const Bytes& image) {
    Begin(image);
    CInputFile file;
    file.Open(kImage);
    ReportOnImage(file).dump(2, ' ', false, Report::error_handler_t::replace);
    try {
        const auto report = VerifyImage(kImage);
        Expect(report.contains("image"), "a plain image has sums");
        Expect(CompareImages(kImage, kImage)["ok"], "an image is the same as itself");
        report.dump(2, ' ', false, Report::error_handler_t::replace);
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
        files.push_back({found.sector * std::int64_t{kSector}, found.size, path});
    }
    const SExtractionRequest request = {kImage, std::string(kFolder) + "files/", EOutputManner::CommitNew, {}};
    CSilentOperation operation;
    const bool completed = CompletesOrLeavesNothing([&] {
        CExtraction extraction(request, file, files, operation);
        extraction.Check();
        extraction.Write();
        extraction.Keep();
    });
    for (const SExtractedFile& extracted : files) {
        std::string path = extracted.path;
        std::replace(path.begin(), path.end(), '\\', '/');
        Expect(!completed ||
                   std::equal(image.begin() + extracted.position, image.begin() + extracted.position + extracted.size,
                              ContentOf(request.folder + path).begin()),
               "an extracted file holds what the image holds");
    }
}

void CheckPostgaps(const Bytes& image, int level) {
    CSilentOperation operation(level);
    Begin(image);
    EndingOf([&] { CheckPostgap({kImage, EUpdateManner::ReadOnly}, operation); });
    Expect(ContentOf(kImage) == image, "a look at the postgap changes nothing");
    CompletesOrLeavesNothing([&] { CheckPostgap({kImage, EUpdateManner::UndoUnlessCommitted}, operation); });
    const Bytes careful = ContentOf(kImage);
    Begin(image);
    EndingOf([&] { CheckPostgap({kImage, EUpdateManner::InPlace}, operation); });
    Expect(ContentOf(kImage) == careful, "both manners append the same postgap");
    CompletesOrLeavesNothing([&] { AddSelectivePostgap({kImage, EUpdateManner::UndoUnlessCommitted}, operation); });
    EndingOf([&] { AddSelectivePostgap({kImage, EUpdateManner::InPlace}, operation); });
}

void ConvertToBin(const Bytes& image) {
    Begin(image);
    CSilentOperation operation;
    const SDirectIsoToBinRequest request = {kImage, kConverted + ".bin", kConverted + ".cue", EOutputManner::CommitNew};
    if (!CompletesOrLeavesNothing([&] { IsoToBinDirectly(request, operation); })) {
        return;
    }
    const Bytes bin = ContentOf(request.binPath);
    for (std::size_t i = 0; i < bin.size() / kRawSectorSize; ++i) {
        const auto sector = std::span(bin).subspan(i * kRawSectorSize).first<kRawSectorSize>();
        Expect(!CheckSector(sector, static_cast<std::uint32_t>(i)).Any(), "raw sectors are right");
    }
    Bytes wanted = image;
    wanted.resize(bin.size() / kRawSectorSize * kSector);
    Expect(wanted.size() == image.size() || wanted.size() == image.size() + kPostgapSectors * kSector,
           "the raw image has the image's sectors, and perhaps a postgap");
    Expect(!EndingOf([&] {
        BinToIso({request.binPath, kAgain, EOutputManner::InPlace}, operation);
    }),
           "the raw image can be converted back");
    Expect(ContentOf(kAgain) == wanted, "the raw image gives back the image");
}

using Conversion = void (*)(const SCompressionRequest&, COperation&);

void Compress(const Bytes& image, int level, Conversion compress, Conversion expand, std::size_t storedUnit) {
    Begin(image);
    CSilentOperation operation(level);
    const SCompressionRequest there = DirectConversion(kImage, kConverted, EOutputManner::CommitNew, kWorkers);
    if (!CompletesOrLeavesNothing([&] { compress(there, operation); })) {
        return;
    }
    const SCompressionRequest back = DirectConversion(kConverted, kAgain, EOutputManner::CommitNew, kWorkers);
    const std::optional<SEnded> ended = EndingOf([&] { expand(back, operation); });
    if (ended) {
        std::fprintf(stderr, "the expansion said: %s\n", ended->text.c_str());
    }
    Expect(!ended, "a compressed image can be expanded");
    Bytes wanted = image;
    wanted.resize(image.size() / storedUnit * storedUnit);
    Expect(ContentOf(kAgain) == wanted, "the compressed image gives back the image");
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
            Compress(image, level, vantrel::IsoToCso, vantrel::CsoToIso, kSector);
            break;
        default:
            Compress(image, level, vantrel::IsoToDax, vantrel::DaxToIso, 1);
    }
    return 0;
}
