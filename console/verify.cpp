#include "console/verify.h"

#include <algorithm>
#include <vector>

#include "console/container_report.h"
#include "console/digest.h"
#include "console/fault_ranges.h"
#include "console/image_report.h"
#include "console/interrupt.h"
#include "console/open_image.h"
#include "console/progress_line.h"
#include "files/input_file.h"
#include "files/path.h"
#include "operation/text.h"
#include "raw/sector_check.h"

namespace vantrel {

namespace {

/// What is read at once; a multiple of every usual block size.
constexpr std::size_t kPieceSize = 1U << 20U;

void Append(Report& list, const std::vector<std::string>& lines) {
    for (const std::string& line : lines) {
        list.push_back(line);
    }
}

/// The whole image through the digest; blocks that cannot be had are noted, and the sums are left out then.
void ReadWhole(CImageSource& image, const std::string& name, Report& report) {
    CProgressLine progress(IsTerminal(), name, image.Size());
    CImageDigest digest;
    CFaultRanges faults(image.BlockNoun());
    std::vector<std::uint8_t> piece(kPieceSize);
    bool complete = true;
    for (std::int64_t position = 0; position < image.Size();) {
        ThrowIfInterrupted();
        const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(image.Size() - position, kPieceSize));
        const std::size_t count = image.ReadAt(position, std::span(piece).first(wanted));
        digest.Update(std::span(piece).first(count));
        position += static_cast<std::int64_t>(count);
        if (count < wanted) {
            const std::int64_t block = position / image.BlockSize();
            faults.Add(static_cast<std::uint64_t>(block), image.Fault());
            position = (block + 1) * image.BlockSize();
            complete = false;
        }
        progress.Update(position, image.Size());
    }
    Append(report["problems"], faults.Lines());
    if (complete) {
        report["image"] = {
            {"bytes", image.Size()}, {"crc32", digest.Crc32()}, {"md5", digest.Md5()}, {"sha1", digest.Sha1()}};
    }
}

std::string TextOf(const SSectorFaults& faults) {
    std::string text;
    const auto tell = [&text](bool wrong, const char* what) {
        if (wrong) {
            text += (text.empty() ? "" : ", ") + std::string(what);
        }
    };
    tell(faults.sync, "sync field");
    tell(faults.address, "address");
    tell(faults.kind, "mode or form");
    tell(faults.edc, "EDC");
    tell(faults.parity, "parity");
    return "wrong " + text;
}

/// Everything around the user data of each raw sector. Addresses must follow the first one.
void CheckRawSectors(const std::string& path, Report& report) {
    CInputFile file;
    if (!file.Open(path)) {
        return;
    }
    CProgressLine progress(IsTerminal(), FileNameOf(path), file.Size());
    CFaultRanges faults("sector");
    std::array<std::uint8_t, kRawSectorSize> sector = {};
    std::uint32_t firstNumber = 0;
    std::uint32_t number = 0;
    for (; file.Read(sector) == sector.size(); ++number) {
        ThrowIfInterrupted();
        if (number == 0) {
            firstNumber = NumberOfSector(sector);
        }
        const SSectorFaults found = CheckSector(sector, firstNumber + number);
        if (found.Any()) {
            faults.Add(number, TextOf(found));
        }
        progress.Update(file.Position(), file.Size());
    }
    Append(report["problems"], faults.Lines());
    if (firstNumber != 0) {
        report["problems"].push_back("the first sector's address is not 00:02:00");
    }
    if (file.Size() % static_cast<std::int64_t>(kRawSectorSize) != 0) {
        report["problems"].push_back(Format("the file is not a whole number of sectors: %lld bytes are left over",
                                            static_cast<long long>(file.Size() % kRawSectorSize)));
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
    if (image->Form() == EForm::Bin) {
        CheckRawSectors(path, report);
    }
    Append(report["problems"], ContainerProblems(path, image->Form()));
    ReadWhole(*image, FileNameOf(path), report);
    Append(report["problems"], ImageProblems(*image));
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
    if (position == image->Size() && position == second->Size()) {
        report["ok"] = true;
        report["difference"] = nullptr;
    } else {
        report["difference"] = {{"byte", position}, {"bytes", image->Size()}, {"bytes_against", second->Size()}};
    }
    return report;
}

}  // namespace vantrel
