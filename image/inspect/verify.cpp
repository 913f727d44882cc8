#include "image/inspect/verify.h"

#include <algorithm>
#include <vector>

#include "image/inspect/container_report.h"
#include "image/inspect/digest.h"
#include "image/inspect/fault_ranges.h"
#include "image/inspect/image_pieces.h"
#include "image/inspect/image_report.h"
#include "console/interrupt.h"
#include "console/open_image.h"
#include "console/progress_line.h"
#include "files/path.h"
#include "pipeline/ordered_pipeline.h"

namespace vantrel {

namespace {

/// Pieces of an image that are in memory.
constexpr std::size_t kPlaces = 6;
/// What is compared at once; a multiple of every usual block size.
constexpr std::size_t kPieceSize = 1U << 20U;

void Append(Report& list, const std::vector<std::string>& lines) {
    for (const std::string& line : lines) {
        list.push_back(line);
    }
}

void Note(CFaultRanges& ranges, const std::vector<SBlockFault>& faults) {
    for (const SBlockFault& fault : faults) {
        ranges.Add(fault.number, fault.text);
    }
}

/// The whole image through the digest. Blocks that cannot be had are noted, and the sums are left out then.
void ReadWhole(const std::string& path, CImageSource& image, Report& report) {
    CProgressLine progress(IsTerminal(), FileNameOf(path), image.Size());
    const std::unique_ptr<CImagePieces> source = PiecesOf(path, image);
    CImageDigest digest;
    // One worker reads, checks and computes two of the sums, in the pieces' order. MD5 alone takes as long as all that.
    CPiecesAhead<SImagePiece> pieces(
        source->Count(), 1, std::vector<SImagePiece>(kPlaces, {std::vector<std::uint8_t>(source->Room()), 0, {}, {}}),
        [&](SImagePiece& piece, std::uint64_t number) {
            source->Read(piece, number);
            digest.UpdateOthers(piece.Bytes());
        },
        [](SImagePiece&, std::uint64_t, std::uint32_t) {});
    CFaultRanges wrong(image.BlockNoun());
    CFaultRanges unreadable(image.BlockNoun());
    std::int64_t done = 0;
    while (const SImagePiece* piece = pieces.Next()) {
        ThrowIfInterrupted();
        digest.UpdateMd5(piece->Bytes());
        Note(wrong, piece->wrong);
        Note(unreadable, piece->unreadable);
        done += static_cast<std::int64_t>(piece->length);
        progress.Update(done, image.Size());
    }
    Append(report["problems"], wrong.Lines());
    Append(report["problems"], source->Problems());
    Append(report["problems"], ContainerProblems(path, image.Form()));
    Append(report["problems"], unreadable.Lines());
    if (unreadable.Lines().empty()) {
        report["image"] = {
            {"bytes", image.Size()}, {"crc32", digest.Crc32()}, {"md5", digest.Md5()}, {"sha1", digest.Sha1()}};
    }
}

}  // namespace

Report VerifyImage(const std::string& path) {
    const std::unique_ptr<CImageSource> image = OpenImageOrRefuse(path);
    Report report;
    report["file"] = path;
    report["form"] = NameOf(image->Form());
    report["ok"] = false;
    report["problems"] = Report::array();
    ReadWhole(path, *image, report);
    Append(report["problems"], ImageProblems(*image));
    if (report["problems"].empty()) {
        RefuseDamaged(*image, path);
    }
    report["ok"] = report["problems"].empty();
    return report;
}

Report CompareImages(const std::string& path, const std::string& other) {
    const std::unique_ptr<CImageSource> image = OpenImageOrRefuse(path);
    const std::unique_ptr<CImageSource> second = OpenImageOrRefuse(other);
    CProgressLine progress(IsTerminal(), FileNameOf(path), image->Size());
    Report report;
    report["file"] = path;
    report["form"] = NameOf(image->Form());
    report["against"] = other;
    report["ok"] = false;
    std::vector<std::uint8_t> piece(kPieceSize);
    std::vector<std::uint8_t> otherPiece(kPieceSize);
    std::int64_t position = 0;
    while (true) {
        ThrowIfInterrupted();
        const std::size_t count = image->ReadAt(position, piece);
        const std::size_t otherCount = second->ReadAt(position, otherPiece);
        const std::size_t both = std::min(count, otherCount);
        const auto differing =
            std::mismatch(piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(both), otherPiece.begin());
        position += differing.first - piece.begin();
        if (differing.first != piece.begin() + static_cast<std::ptrdiff_t>(both) || count != otherCount || both == 0) {
            break;
        }
        progress.Update(position, image->Size());
    }
    RefuseDamaged(*image, path);
    RefuseDamaged(*second, other);
    if (position == image->Size() && position == second->Size()) {
        report["ok"] = true;
        report["difference"] = nullptr;
    } else {
        report["difference"] = {{"byte", position}, {"bytes", image->Size()}, {"bytes_against", second->Size()}};
    }
    return report;
}

}  // namespace vantrel
