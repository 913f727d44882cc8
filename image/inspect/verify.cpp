#include "image/inspect/verify.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "files/input_file.h"
#include "files/refused.h"
#include "image/image_source.h"
#include "image/inspect/container_report.h"
#include "image/inspect/digest.h"
#include "image/inspect/fault_ranges.h"
#include "image/inspect/image_chunks.h"
#include "image/inspect/image_report.h"
#include "image/inspect/layout_report.h"
#include "pipeline/ordered_pipeline.h"

namespace vantrel {

namespace {

constexpr std::size_t kSlots = 6;
/// Bytes that are compared at a time; a multiple of every common block size.
constexpr std::size_t kComparedSize = 1U << 20U;

/// What reading a whole image has found out.
struct SReading {
    std::vector<std::string> problems;
    std::optional<SSums> sums;  ///< Nullopt if parts of the image are unreadable.
};

void Append(std::vector<std::string>& list, const std::vector<std::string>& lines) {
    list.insert(list.end(), lines.begin(), lines.end());
}

void Add(CFaultRanges& ranges, const std::vector<SBlockFault>& faults) {
    for (const SBlockFault& fault : faults) {
        ranges.Add(fault.number, fault.text);
    }
}

SReading ReadWhole(const std::string& path, CImageSource& image, COperation& operation) {
    operation.SetTotal(image.Size());
    const std::unique_ptr<CImageChunks> source = ChunksOf(path, image);
    CImageDigest digest;
    // One worker reads, checks and computes two of the sums, in order. MD5, on this thread, takes as long as all that.
    COrderedPipeline<SImageChunk> chunks(
        source->Count(), 1,
        std::vector<SImageChunk>(kSlots, {std::vector<std::uint8_t>(source->BufferSize()), 0, {}, {}}),
        [&](SImageChunk& chunk, std::uint64_t number) {
            source->Read(chunk, number);
            digest.UpdateOthers(chunk.Bytes());
        },
        [](SImageChunk&, std::uint64_t, std::uint32_t) {});
    CFaultRanges wrong(image.BlockNoun());
    CFaultRanges unreadable(image.BlockNoun());
    std::int64_t done = 0;
    while (const SImageChunk* chunk = chunks.Next()) {
        operation.Yield();
        digest.UpdateMd5(chunk->Bytes());
        Add(wrong, chunk->wrong);
        Add(unreadable, chunk->unreadable);
        done += static_cast<std::int64_t>(chunk->length);
        operation.SetDone(done);
    }
    SReading reading;
    Append(reading.problems, wrong.Lines());
    Append(reading.problems, source->Problems());
    Append(reading.problems, ContainerProblems(path, image.Form()));
    Append(reading.problems, unreadable.Lines());
    if (unreadable.IsEmpty()) {
        reading.sums = {image.Size(), digest.Crc32(), digest.Md5(), digest.Sha1()};
    }
    return reading;
}

/// The sums of a file as it is.
SSums SumsOfFile(const std::string& path, COperation& operation) {
    CInputFile file;
    if (!file.Open(path)) {
        throw CRefused(path + ": " + LastFileError());
    }
    operation.SetTotal(file.Size());
    CImageDigest digest;
    std::vector<std::uint8_t> bytes(kComparedSize);
    std::int64_t done = 0;
    while (const std::size_t count = file.Read(bytes)) {
        operation.Yield();
        digest.UpdateMd5(std::span(bytes).first(count));
        digest.UpdateOthers(std::span(bytes).first(count));
        done += static_cast<std::int64_t>(count);
        operation.SetDone(done);
    }
    if (file.HasFailed()) {
        throw CRefused(file.Problem());
    }
    return {done, digest.Crc32(), digest.Md5(), digest.Sha1()};
}

/// Looks an image up in a database; raw images are listed there as whole files.
CReport LookUp(const CDatFile& dat, const std::string& path, EForm form, SReading& reading, COperation& operation) {
    const SDatEntry* entry = nullptr;
    if (reading.sums) {
        entry = dat.Find(form == EForm::Bin ? SumsOfFile(path, operation) : *reading.sums);
    }
    if (entry == nullptr) {
        reading.problems.push_back("no entry of " + dat.Path() + " has this size and these checksums");
        return {{"file", dat.Path()}, {"status", "unknown"}};
    }
    return {{"file", dat.Path()}, {"status", "verified"}, {"game", entry->game}, {"name", entry->file}};
}

CReport VerifyImage(const std::string& path, const CDatFile* dat, COperation& operation) {
    const std::unique_ptr<CImageSource> image = OpenImage(path);
    SReading reading = ReadWhole(path, *image, operation);
    Append(reading.problems, ImageProblems(*image));
    if (reading.problems.empty()) {
        RefuseDamaged(*image, path);
    }
    std::optional<CReport> found;
    if (dat != nullptr) {
        found = LookUp(*dat, path, image->Form(), reading, operation);
    }
    CReport report = {{"file", path},
                      {"form", NameOf(image->Form())},
                      {"ok", reading.problems.empty()},
                      {"problems", reading.problems}};
    if (const auto& sums = reading.sums) {
        report.Add("image", {{"bytes", sums->bytes}, {"crc32", sums->crc32}, {"md5", sums->md5}, {"sha1", sums->sha1}});
    }
    if (found) {
        report.Add("dat", *std::move(found));
    }
    return report;
}

/// The position of the first byte that differs; the length of the shorter image if that is how the other begins.
std::int64_t FirstDifference(CImageSource& image, CImageSource& other, COperation& operation) {
    operation.SetTotal(image.Size());
    std::vector<std::uint8_t> bytes(kComparedSize);
    std::vector<std::uint8_t> otherBytes(kComparedSize);
    std::int64_t position = 0;
    while (true) {
        operation.Yield();
        const std::size_t count = image.ReadAt(position, bytes);
        const std::size_t otherCount = other.ReadAt(position, otherBytes);
        const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(std::min(count, otherCount));
        const auto differing = std::mismatch(bytes.begin(), end, otherBytes.begin()).first;
        position += differing - bytes.begin();
        if (differing != end || count != otherCount || count == 0) {
            return position;
        }
        operation.SetDone(position);
    }
}

}  // namespace

CReport VerifyFile(const std::string& path, COperation& operation, const SVerifyOptions& options) {
    if (FormOfFile(path) != EForm::Iml) {
        return VerifyImage(path, options.dat, operation);
    }
    if (options.dat != nullptr) {
        throw CRefused(path + ": a layout has no checksums to look up");
    }
    return VerifyLayout(path, options.filesFolder);
}

CReport CompareImages(const std::string& path, const std::string& other, COperation& operation) {
    const std::unique_ptr<CImageSource> image = OpenImage(path);
    const std::unique_ptr<CImageSource> second = OpenImage(other);
    const std::int64_t position = FirstDifference(*image, *second, operation);
    RefuseDamaged(*image, path);
    RefuseDamaged(*second, other);
    const bool same = position == image->Size() && position == second->Size();
    CReport difference;
    if (!same) {
        difference = {{"byte", position}, {"bytes", image->Size()}, {"bytes_against", second->Size()}};
    }
    return {{"file", path},
            {"form", NameOf(image->Form())},
            {"against", other},
            {"ok", same},
            {"difference", std::move(difference)}};
}

}  // namespace vantrel
