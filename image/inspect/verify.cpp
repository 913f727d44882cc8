#include "image/inspect/verify.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <vector>

#include "files/refused.h"
#include "image/image_chunks.h"
#include "image/image_compare.h"
#include "image/image_source.h"
#include "image/inspect/file_sums.h"
#include "image/inspect/layout_report.h"
#include "image/inspect/structure_check.h"
#include "image/inspect/whole_reading.h"
#include "image/raw_report.h"
#include "operation/text.h"

namespace vantrel {

namespace {

CReport ReportOn(const SSums& sums) {
    return {{"bytes", sums.bytes}, {"crc32", sums.crc32}, {"md5", sums.md5}, {"sha1", sums.sha1}};
}

void Append(std::vector<std::string>& list, const std::vector<std::string>& lines) {
    list.insert(list.end(), lines.begin(), lines.end());
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
        tracks[i].Add("checked", disc.tracks[i].IsReadableData());
    }
    return tracks;
}

/// What is wrong in further data tracks, which are not part of the image.
std::vector<std::string> ProblemsOfOtherTracks(const SRawDisc& disc, const std::function<void()>& afterChunk) {
    std::vector<std::string> problems;
    for (const STrack& track : disc.OtherTracks()) {
        if (track.IsReadableData()) {
            for (const std::string& problem :
                 ReadWhole(*ChunksOf(track), "sector", [&](std::int64_t) { afterChunk(); }).problems) {
                problems.push_back(Format("track %u: %s", track.number, problem.c_str()));
            }
        }
    }
    return problems;
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
    CFileSums sums(disc.Files());
    operation.SetTotal(image->Size() + sums.TotalBytes());
    const auto showProgress = [&](std::int64_t bytes) {
        operation.Yield();
        operation.SetDone(bytes + sums.DoneBytes());
    };
    SReading reading = ReadWhole(*image->Chunks(), image->BlockNoun(), showProgress);
    Append(reading.problems, ProblemsOfOtherTracks(disc, [&] { showProgress(image->Size()); }));
    if (disc.tracks.empty()) {  // The chunks of a raw image report what it lacks.
        Append(reading.problems, image->MissingParts());
    }
    if (reading.sums) {  // the structures of an image with holes would contradict each other
        Append(reading.problems, StructureProblems(*image));
    }
    const std::vector<SFileSums> files = sums.Wait([&] { showProgress(image->Size()); });
    for (const SFileSums& file : files) {
        Append(reading.problems, file.problems);
    }
    if (reading.problems.empty()) {
        RefuseDamaged(*image, path);
    }
    std::optional<CReport> found;
    if (dat != nullptr) {
        found =
            LookUp(*dat, files.empty() ? std::vector<SFileSums>{{path, reading.sums, {}}} : files, reading.problems);
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
