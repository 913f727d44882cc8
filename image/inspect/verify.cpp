#include "image/inspect/verify.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "files/native_file.h"
#include "files/refused.h"
#include "image/forms.h"
#include "image/image_chunks.h"
#include "image/image_compare.h"
#include "image/image_source.h"
#include "image/inspect/digest.h"
#include "image/inspect/image_report.h"
#include "image/inspect/layout_report.h"
#include "image/raw_report.h"
#include "pipeline/ordered_pipeline.h"
#include "raw/fault_ranges.h"

namespace vantrel {

namespace {

constexpr std::size_t kSlots = 6;

/// What reading a whole image has found out.
struct SReading {
    std::vector<std::string> problems;
    std::optional<SSums> sums;  ///< Nullopt if parts of the image are unreadable.
};

struct SFileSums {
    std::string path;
    std::optional<SSums> sums;  ///< Nullopt if the file cannot be read.
};

CReport ReportOn(const SSums& sums) {
    return {{"bytes", sums.bytes}, {"crc32", sums.crc32}, {"md5", sums.md5}, {"sha1", sums.sha1}};
}

void Append(std::vector<std::string>& list, const std::vector<std::string>& lines) {
    list.insert(list.end(), lines.begin(), lines.end());
}

void Add(CFaultRanges& ranges, const std::vector<SBlockFault>& faults) {
    for (const SBlockFault& fault : faults) {
        ranges.Add(fault.number, fault.text);
    }
}

/// Reads files and images to their end. Progress is counted in the bytes of all of them.
class CWholeReader {
public:
    CWholeReader(COperation& operation, std::int64_t totalBytes) : m_operation(operation) {
        operation.SetTotal(totalBytes);
    }

    SReading Read(CImageChunks& source, const char* blockNoun) {
        CImageDigest digest;
        // One worker reads, checks and computes two of the sums, in order. MD5, on this thread, takes as long as all
        // that.
        COrderedPipeline<SImageChunk> chunks(
            source.Count(), 1,
            std::vector<SImageChunk>(kSlots, {std::vector<std::uint8_t>(source.BufferSize()), 0, {}, {}}),
            [&](SImageChunk& chunk, std::uint64_t number) {
                source.Read(chunk, number);
                digest.UpdateOthers(chunk.Bytes());
            },
            [](SImageChunk&, std::uint64_t, std::uint32_t) {});
        CFaultRanges wrong(blockNoun);
        CFaultRanges unreadable(blockNoun);
        std::int64_t bytes = 0;
        while (const SImageChunk* chunk = chunks.Next()) {
            m_operation.Yield();
            digest.UpdateMd5(chunk->Bytes());
            Add(wrong, chunk->wrong);
            Add(unreadable, chunk->unreadable);
            bytes += static_cast<std::int64_t>(chunk->length);
            m_operation.SetDone(m_done + bytes);
        }
        m_done += bytes;
        SReading reading;
        Append(reading.problems, wrong.Lines());
        Append(reading.problems, source.Problems());
        Append(reading.problems, unreadable.Lines());
        if (unreadable.IsEmpty()) {
            reading.sums = {bytes, digest.Crc32(), digest.Md5(), digest.Sha1()};
        }
        return reading;
    }

private:
    COperation& m_operation;
    std::int64_t m_done = 0;
};

std::int64_t TotalSize(const std::vector<std::string>& files) {
    std::int64_t sum = 0;
    for (const std::string& file : files) {
        sum += std::max<std::int64_t>(FileSizeOf(file), 0);
    }
    return sum;
}

/// The sums of a file as a whole; nullopt, and a problem more, if it cannot be read.
std::optional<SSums> SumsOfFile(const std::string& path, CWholeReader& reader, std::vector<std::string>& problems) {
    try {
        const std::unique_ptr<CImageSource> file = OpenPlainImage(path);
        SReading reading = reader.Read(*file->Chunks(), file->BlockNoun());
        RefuseDamaged(*file, path);
        Append(problems, reading.problems);
        return std::move(reading.sums);
    } catch (const CRefused& refused) {
        problems.emplace_back(refused.what());
        return std::nullopt;
    }
}

/// One object for each file: its path and its sums.
CReport::List ReportOn(const std::vector<SFileSums>& files) {
    CReport::List list;
    for (const SFileSums& file : files) {
        CReport entry = {{"file", file.path}};
        if (file.sums) {
            const CReport sums = ReportOn(*file.sums);
            for (const auto& [name, value] : sums.As<CReport::Object>()) {
                entry.Add(name, value);
            }
        }
        list.push_back(std::move(entry));
    }
    return list;
}

/// The tracks, and whether their sectors were checked.
CReport::List CheckedTracks(const SRawDisc& disc) {
    CReport::List tracks = ReportOnTracks(disc);
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        tracks[i].Add("checked", i == disc.dataTrack);
    }
    return tracks;
}

/// The disc in a raw image; without tracks for other forms.
SRawDisc RawDiscOf(const std::string& path, EForm form) {
    return form == EForm::Bin || form == EForm::Cue ? ReadRawDisc(path) : SRawDisc();
}

/// Looks up an image, or the files of a raw one, which databases list instead. Every file must be known.
CReport LookUp(const CDatFile& dat, const std::vector<SFileSums>& files, std::vector<std::string>& problems) {
    const SDatEntry* first = nullptr;
    for (const SFileSums& file : files) {
        const SDatEntry* const entry = file.sums ? dat.Find(*file.sums) : nullptr;
        if (entry == nullptr) {
            problems.push_back("no entry of " + dat.Path() + " has the size and the checksums of " + file.path);
            return {{"file", dat.Path()}, {"status", "unknown"}};
        }
        first = first == nullptr ? entry : first;
    }
    return {{"file", dat.Path()}, {"status", "verified"}, {"game", first->game}, {"name", first->file}};
}

CReport VerifyImage(const std::string& path, const CDatFile* dat, COperation& operation) {
    const std::unique_ptr<CImageSource> image = OpenImage(path);
    const SRawDisc disc = RawDiscOf(path, image->Form());
    CWholeReader reader(operation, image->Size() + TotalSize(disc.Files()));
    SReading reading = reader.Read(*image->Chunks(), image->BlockNoun());
    Append(reading.problems, image->MissingParts());
    Append(reading.problems, ImageProblems(*image));
    std::vector<SFileSums> files;
    for (const std::string& file : disc.Files()) {
        files.push_back({file, SumsOfFile(file, reader, reading.problems)});
    }
    if (reading.problems.empty()) {
        RefuseDamaged(*image, path);
    }
    std::optional<CReport> found;
    if (dat != nullptr) {
        found = LookUp(*dat, files.empty() ? std::vector<SFileSums>{{path, reading.sums}} : files, reading.problems);
    }
    CReport report = {{"file", path},
                      {"form", NameOf(image->Form())},
                      {"ok", reading.problems.empty()},
                      {"problems", reading.problems}};
    if (disc.hasSheet) {
        report.Add("tracks", CheckedTracks(disc));
    }
    if (reading.sums) {
        report.Add("image", ReportOn(*reading.sums));
    }
    if (disc.hasSheet) {
        report.Add("bins", ReportOn(files));
    } else if (!files.empty()) {
        report.Add("bin", std::move(ReportOn(files)[0]));
    }
    if (found) {
        report.Add("dat", *std::move(found));
    }
    return report;
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
