#include "iml/rebuild/disc_rebuild.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "files/checked_file.h"
#include "files/refused.h"
#include "iml/layout/gap_file.h"
#include "iml/layout/layout_path.h"
#include "iml/layout/recorded_files.h"
#include "iml/layout/trailing_sector.h"
#include "iml/rebuild/composed_image.h"
#include "iml/rebuild/layout_pass.h"
#include "iml/rebuild/listed_files.h"
#include "iml/rebuild/placements.h"
#include "iso/edit/edit_writer.h"
#include "iso/path_table.h"
#include "iso/volume.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// A listed file: its record, and its content on the disk.
struct SFoundFile {
    const std::string* listedPath;  ///< as in the layout
    std::string path;               ///< in the directories, with '/'
    std::uint32_t sector;
    std::int64_t size;    ///< as recorded
    std::string source;   ///< path on the disk
    std::int64_t length;  ///< on the disk
};

/// A file of recorded length in the composed image.
struct SKeptFile {
    std::size_t index;   ///< of the found file
    std::size_t number;  ///< in the composed image
};

/// A path of the directories as the disc map has it.
std::string MapPath(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return LineName(std::move(path));
}

/// Whether every export lists such a record, so that a layout without it was changed.
bool MustBeListed(const SContentFile& file) {
    return file.flags == kFileFlagsPlain && file.extents.size() == 1 && !file.path.empty() &&
           !file.path.ends_with('\\');
}

class CDiscRebuild {
public:
    CDiscRebuild(const SRebuildRequest& request, const SLayoutShape& shape, COperation& operation)
        : m_request(request),
          m_isExact(request.rule == ERebuildRule::Exact),
          m_isDvd(shape.isDvd),
          m_operation(operation),
          m_placements(request, operation),
          m_pass(request, shape, m_placements, operation),
          m_leading(operation) {}

    SEditReport Run() {
        m_pass.Run();
        OpenLeading();
        OpenGaps();
        CheckOrigin();
        FindFiles();
        CComposedImage base(LengthOfImage());
        AddFiles(base);
        AddStructures(base);
        const SEditPlan plan = Plan(base);
        base.StartSums();
        if (m_request.dryRun) {
            ReadAll(base);
        } else {
            CCheckedOutput output(m_operation);
            output.OpenOrFail(m_request.outputPath, m_request.manner, "Code 203!!! file not found ==> %s");
            WriteEdited({base, m_request.layoutPath, [&base] { ThrowProblemOf(base); }}, plan, output, m_operation);
            m_report = ReportOn(plan);
            CheckResult(base, plan);
            output.CommitOrFail();
            return Finish();
        }
        m_report = ReportOn(plan);
        CheckResult(base, plan);
        return Finish();
    }

private:
    void OpenLeading() {
        m_leading.OpenOrFail(m_request.leadingPath, "Code 204!!! file not found==> %s");
        m_leadingLength = m_leading.SizeOrFail() - (m_isDvd ? kSectorSize : 0);
        if (ReplacesLeading(m_request)) {
            m_operation.Fail(Format("The image would replace %s", m_request.leadingPath.c_str()));
        }
        if (m_leadingLength < 0 || m_leadingLength / kSectorSize <= m_pass.LeadingLast()) {
            m_operation.Fail(Format("The file %s is shorter than the layout says", m_request.leadingPath.c_str()));
        }
    }

    void OpenGaps() {
        if (FileKindOf(m_request.gapsPath) == EFileKind::Missing) {
            if (m_isExact) {
                m_operation.Fail(Format(
                    "%s is missing: an exact rebuild needs the gap file that \"vantrel iso2iml --extract\" writes",
                    m_request.gapsPath.c_str()));
            }
            Notify(
                Format("There is no %s: whatever no listed file covers becomes zeros. \"vantrel iso2iml --extract\" "
                       "keeps it in that file",
                       m_request.gapsPath.c_str()));
            return;
        }
        m_gaps.emplace();
        if (!m_gaps->Open(m_request.gapsPath)) {
            m_operation.Fail(m_gaps->Problem());
        }
        if (m_gaps->Origin().image.length / kSectorSize >= kSectorLimit) {
            m_operation.Fail(Format("%s describes an image larger than any disc", m_request.gapsPath.c_str()));
        }
    }

    /// A gap file belongs to a layout and its leading structures. An edited rebuild accepts a change of one of them.
    void CheckOrigin() {
        if (!m_gaps) {
            return;
        }
        CCheckedInput layout(m_operation);
        layout.OpenOrFail(m_request.layoutPath, "Code 2011 - Error Opening %s");
        const bool isLayout = SumOf(layout) == m_gaps->Origin().layout;
        m_isLeadingUnchanged = SumOf(m_leading) == m_gaps->Origin().leading;
        if (m_isExact && !isLayout) {
            m_operation.Fail(
                Format("%s belongs to another layout than %s: an exact rebuild needs both as one export wrote them",
                       m_request.gapsPath.c_str(), m_request.layoutPath.c_str()));
        }
        if (!isLayout && !m_isLeadingUnchanged) {
            m_operation.Fail(Format("%s belongs to another layout than %s; delete it if nothing can replace it",
                                    m_request.gapsPath.c_str(), m_request.layoutPath.c_str()));
        }
        if (!m_isExact && !m_isLeadingUnchanged) {
            Notify(Format("%s has changed since the export", m_request.leadingPath.c_str()));
        }
    }

    SChecksum SumOf(CCheckedInput& file) {
        const SChecksum sum = ChecksumOf(file, [this] { m_operation.Yield(); });
        file.FailIfUnread();
        return sum;
    }

    /// Without a gap file, the image ends with its volume, or behind it with the last file.
    std::int64_t LengthOfImage() {
        if (m_gaps) {
            return m_gaps->Origin().image.length;
        }
        std::int64_t sectors =
            std::max<std::int64_t>(ReadPrimaryVolume(m_leading).volumeSpaceSize.Value(), SectorsFor(m_leadingLength));
        for (const SFoundFile& file : m_files) {
            sectors = file.size > 0 ? std::max(sectors, file.sector + SectorsFor(file.size)) : sectors;
        }
        if (m_isDvd) {
            sectors = std::max<std::int64_t>(sectors, std::int64_t{TrailingLocation()} + 1);
        }
        if (sectors > kSectorLimit) {
            m_operation.Fail(Format("%s describes an image larger than any disc", m_request.leadingPath.c_str()));
        }
        return sectors * kSectorSize;
    }

    std::uint32_t TrailingLocation() { return TagLocationOf(ReadTrailingSector(m_leading)); }

    void AddStructures(CComposedImage& image) {
        if (m_gaps) {
            image.AddGaps(*m_gaps);
        }
        image.AddSource(0, m_leadingLength, m_leading);
        if (!m_gaps && m_isDvd) {
            image.AddBytes(TrailingLocation() * kSectorSize, ClosingAnchor());
        }
    }

    /// The closing anchor of a UDF volume. The leading structures hold only the start of its tag, but its content is
    /// that of the first anchor. Empty if the volume had none.
    std::vector<std::uint8_t> ClosingAnchor() {
        constexpr std::size_t kChecksumOffset = 4;
        const TrailingSector trailing = ReadTrailingSector(m_leading);
        TrailingSector anchor = {};
        m_leading.ReadAt(kAnchorSector * kSectorSize, anchor);
        if (LoadLe16(std::span(trailing).first<2>()) != kTagAnchor ||
            !std::equal(trailing.begin() + 5, trailing.begin() + kTagHeadSize, anchor.begin() + 5)) {
            return {};
        }
        const auto location = Le32(TagLocationOf(trailing));
        std::copy(location.begin(), location.end(), anchor.begin() + kTagHeadSize);
        anchor[kChecksumOffset] = 0;
        std::uint8_t sum = 0;
        for (std::size_t i = 0; i < kTagHeadSize + location.size(); ++i) {
            sum = static_cast<std::uint8_t>(sum + anchor[i]);
        }
        anchor[kChecksumOffset] = sum;
        return {anchor.begin(), anchor.end()};
    }

    /// Finds the records of all listed files, and the files themselves.
    void FindFiles() {
        CComposedImage structures(m_gaps ? m_gaps->Origin().image.length : m_leadingLength);
        AddStructures(structures);
        const CRecordedFiles records(structures);
        std::set<const SContentFile*> found;
        CListedFiles listed(m_request, m_operation);
        CCheckedInput file(m_operation);
        for (const SPlacement& placement : m_placements.Files()) {
            const SContentFile* const record = records.Find(placement.path, placement.first, placement.last);
            if (record == nullptr) {
                RefuseUnknown(placement);
            }
            std::string source = listed.OpenOrFail(placement.path, file);
            const std::int64_t length = file.SizeOrFail();
            if (m_isExact && length != record->Size()) {
                RefuseLength(placement, length, *record, records);
            }
            m_files.push_back(
                {&placement.path, MapPath(record->path), record->Sector(), record->Size(), std::move(source), length});
            found.insert(record);
            m_operation.Yield();
        }
        if (!m_isExact) {
            CheckListing(records, found);
        }
        std::stable_sort(m_files.begin(), m_files.end(),
                         [](const SFoundFile& a, const SFoundFile& b) { return a.sector < b.sector; });
    }

    [[noreturn]] void RefuseUnknown(const SPlacement& file) {
        m_operation.Fail(Format("The directories have no file %s at sectors %u to %u%s", file.path.c_str(), file.first,
                                file.last,
                                m_isExact ? ""
                                          : "; a rebuild cannot rename, add or move files, so the layout must list "
                                            "them as it did when it was exported"));
    }

    [[noreturn]] void RefuseLength(const SPlacement& file, std::int64_t length, const SContentFile& record,
                                   const CRecordedFiles& records) {
        const auto other = std::find_if(records.All().begin(), records.All().end(), [&record](const SContentFile& a) {
            return a.Size() > 0 && a.Sector() == record.Sector();
        });
        if (record.Size() == 0 && other != records.All().end()) {
            m_operation.Fail(Format("%s has %lld bytes, but the image records it as empty, at the sector of %s",
                                    file.path.c_str(), static_cast<long long>(length), other->path.c_str()));
        }
        m_operation.Fail(Format("%s has %lld bytes, but the image records %lld: an exact rebuild takes unchanged files",
                                file.path.c_str(), static_cast<long long>(length),
                                static_cast<long long>(record.Size())));
    }

    /// Fails for a file that was taken out of the layout.
    void CheckListing(const CRecordedFiles& records, const std::set<const SContentFile*>& listed) {
        for (const SContentFile& record : records.All()) {
            const bool wasExported = m_gaps && m_gaps->FindFile(record.Sector(), record.Size()) != nullptr;
            if (!listed.contains(&record) && (MustBeListed(record) || wasExported)) {
                m_operation.Fail(
                    Format("The layout does not list %s, which the directories have; a rebuild cannot "
                           "remove files, but an empty file in its place empties it",
                           LineName(record.path).c_str()));
            }
        }
    }

    /// Adds the files of recorded length. Names of the same place must have the same content.
    void AddFiles(CComposedImage& base) {
        std::map<std::pair<std::uint32_t, std::int64_t>, std::size_t> firstNames;
        for (std::size_t i = 0; i < m_files.size(); ++i) {
            SFoundFile& file = m_files[i];
            const auto [first, isFirst] = firstNames.try_emplace({file.sector, file.size}, i);
            if (file.size > 0 && !isFirst) {
                CheckSameContent(m_files[first->second], file);
            } else if (file.length != file.size) {
                m_changed.push_back(i);
            } else if (file.size > 0) {
                m_kept.push_back({i, base.AddFile(file.sector * kSectorSize, file.length, file.source)});
            }
        }
    }

    void CheckSameContent(const SFoundFile& first, const SFoundFile& second) {
        if (first.length != second.length || SumOfFile(first.source) != SumOfFile(second.source)) {
            m_operation.Fail(Format("%s and %s are two names of the same sectors, but their contents differ",
                                    first.listedPath->c_str(), second.listedPath->c_str()));
        }
    }

    SChecksum SumOfFile(const std::string& path) {
        CCheckedInput file(m_operation);
        file.OpenOrFail(path, "Cannot open %s");
        return SumOf(file);
    }

    SEditPlan Plan(CComposedImage& base) {
        if (m_changed.empty() && m_gaps) {
            return PlanNothing(base);
        }
        const SDiscMap map = ReadMap(base);
        std::vector<SFileChange> changes;
        for (const std::size_t index : m_changed) {
            const SFoundFile& file = m_files[index];
            const auto place = map.FindPlace(file.sector, file.size, file.path);
            if (!place) {
                m_operation.Fail(Format("%s cannot be changed: the directories contradict themselves about it",
                                        file.listedPath->c_str()));
            }
            changes.push_back({*place, file.length, file.source});
        }
        return PlanEdit(base, map, std::move(changes), m_request.editRules);
    }

    SDiscMap ReadMap(CComposedImage& base) {
        SDiscMap map = ReadDiscMap(base, m_gaps ? EMapRule::Complete : EMapRule::ReachableOnly);
        ThrowProblemOf(base);
        m_warnings = map.warnings;
        return map;
    }

    static void ThrowProblemOf(const CComposedImage& base) {
        if (!base.Problem().empty()) {
            throw CRefused(base.Problem());
        }
    }

    /// Reads what a rebuild would write, for the checksums.
    void ReadAll(CComposedImage& base) {
        if (m_gaps) {
            ChecksumOf(base, [this] { m_operation.Yield(); });
            ThrowProblemOf(base);
        }
    }

    /// Finds the changed files among those of recorded length, and compares the image if there are none.
    void CheckResult(CComposedImage& base, const SEditPlan& plan) {
        m_leading.FailIfUnread();
        ThrowProblemOf(base);
        if (!m_gaps) {
            m_report.comparesContent = false;
            CountUnchanged();
            return;
        }
        for (const SKeptFile& kept : m_kept) {
            const SFoundFile& file = m_files[kept.index];
            SChecksum sum = base.FileSum(kept.number);
            if (sum.length != file.length) {
                sum = SumOfFile(file.source);  // another file covers a part of it
            }
            const SExportedFile* const exported = m_gaps->FindFile(file.sector, file.length);
            if (exported != nullptr && exported->sum != sum) {
                AddChangedContent(file);
            }
        }
        std::sort(m_report.edits.begin(), m_report.edits.end(),
                  [](const SFileEdit& a, const SFileEdit& b) { return a.from < b.from; });
        const bool isSame = plan.edits.empty() && m_report.edits.empty() && m_isLeadingUnchanged;
        if ((isSame || m_isExact) && base.Sum() != m_gaps->Origin().image) {
            m_operation.Fail(
                Format("The image would differ from the one that %s was exported from: a file or the leading "
                       "structures have changed",
                       m_request.layoutPath.c_str()));
        }
        if (plan.edits.empty() && !m_report.edits.empty()) {
            ReadMap(base);  // refuses overlapping files
        }
        CountUnchanged();
    }

    void AddChangedContent(const SFoundFile& file) {
        if (m_isExact) {
            m_operation.Fail(
                Format("%s has changed: an exact rebuild takes unchanged files", file.listedPath->c_str()));
        }
        SFileEdit edit = {{}, file.sector, file.sector, file.length, file.length, file.source};
        const auto first =
            std::lower_bound(m_files.begin(), m_files.end(), file.sector,
                             [](const SFoundFile& a, std::uint32_t sector) { return a.sector < sector; });
        for (auto other = first; other != m_files.end() && other->sector == file.sector; ++other) {
            if (other->size == file.size) {
                edit.names.push_back(other->path);
            }
        }
        m_report.edits.push_back(std::move(edit));
    }

    void CountUnchanged() {
        m_report.unchanged = std::ssize(m_files);
        for (const SFileEdit& edit : m_report.edits) {
            m_report.unchanged -= std::ssize(edit.names);
        }
    }

    void Notify(const std::string& text) {
        m_operation.Notify(text);
        m_notices.push_back(text);
    }

    SEditReport Finish() {
        m_leading.Close();
        for (const SFileEdit& edit : m_report.edits) {
            m_operation.Notify(LineOf(edit));
        }
        std::string warning;
        for (const std::string& text : m_warnings) {
            warning += (warning.empty() ? "" : "\n") + text;
            m_notices.push_back(text);
        }
        if (!warning.empty()) {
            warning += Format("\n\"vantrel iso2iml --extract\" keeps all of it in %s", m_request.gapsPath.c_str());
            m_operation.Warn(warning);
        }
        m_report.notices = m_notices;
        if (m_request.dryRun) {
            m_operation.Notify(m_request.layoutPath + ": " + SummaryOf(m_report) + "; nothing was written");
            return std::move(m_report);
        }
        const char* const exactText = m_isDvd ? "Rebuilding [dvd] ISO done!" : "Rebuilding [cd] ISO done!";
        m_operation.SetPane(EPane::File, m_request.outputPath);
        m_operation.Complete(m_isExact ? exactText : SummaryOf(m_report).c_str());
        return std::move(m_report);
    }

    const SRebuildRequest& m_request;
    const bool m_isExact;
    const bool m_isDvd;
    COperation& m_operation;
    CPlacements m_placements;
    CLayoutPass m_pass;
    CCheckedInput m_leading;
    std::int64_t m_leadingLength = 0;  ///< without the trailing sector of a DVD
    std::optional<CGapFileReader> m_gaps;
    bool m_isLeadingUnchanged = true;
    std::vector<SFoundFile> m_files;     ///< in the order of the recorded sectors
    std::vector<SKeptFile> m_kept;       ///< files of recorded length, one for each place
    std::vector<std::size_t> m_changed;  ///< files of another length, one for each place
    std::vector<std::string> m_notices;
    std::vector<std::string> m_warnings;
    SEditReport m_report;
};

}  // namespace

SEditReport RebuildDisc(const SRebuildRequest& request, const SLayoutShape& shape, COperation& operation) {
    try {
        return CDiscRebuild(request, shape, operation).Run();
    } catch (const CRefused& refused) {
        operation.Fail(refused.what());
    }
}

}  // namespace vantrel
