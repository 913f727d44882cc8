#include "iml/rebuild/disc_rebuild.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "files/checked_file.h"
#include "files/refused.h"
#include "iml/layout/layout_path.h"
#include "iml/layout/recorded_files.h"
#include "iml/rebuild/composed_image.h"
#include "iml/rebuild/kept_structures.h"
#include "iml/rebuild/layout_pass.h"
#include "iml/rebuild/listed_files.h"
#include "iml/rebuild/placements.h"
#include "iso/edit/edit_writer.h"
#include "iso/path_table.h"
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
          m_kept(request, shape.isDvd, operation) {}

    SEditReport Run() {
        m_pass.Run();
        m_kept.OpenOrFail(m_pass.LeadingLast());
        for (const std::string& notice : m_kept.Notices()) {
            m_operation.Notify(notice);
        }
        FindFiles();
        CComposedImage base(m_kept.ImageLengthOrFail(EndOfFiles()));
        AddFiles(base);
        m_kept.AddTo(base);
        const SEditPlan plan = Plan(base);
        m_report = ReportOn(plan);
        base.StartSums();
        if (m_request.dryRun) {
            ReadAll(base);
            CheckResult(base, plan);
        } else {
            CCheckedOutput output(m_operation);
            output.OpenOrFail(m_request.outputPath, m_request.manner, "Code 203!!! file not found ==> %s");
            WriteEdited({base, m_request.layoutPath, [&base] { ThrowProblemOf(base); }}, plan, output, m_operation);
            CheckResult(base, plan);
            output.CommitOrFail();
        }
        return Finish();
    }

private:
    /// The sector behind the last file with content; 0 if there is none.
    std::int64_t EndOfFiles() const {
        std::int64_t end = 0;
        for (const SFoundFile& file : m_files) {
            end = file.size > 0 ? std::max(end, file.sector + SectorsFor(file.size)) : end;
        }
        return end;
    }

    /// Finds the records of all listed files, and the files themselves.
    void FindFiles() {
        CComposedImage structures(m_kept.LengthOfStructures());
        m_kept.AddTo(structures);
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
        m_operation.Fail(Format("%s has %lld bytes, but the image records %lld: an exact rebuild needs unchanged files",
                                file.path.c_str(), static_cast<long long>(length),
                                static_cast<long long>(record.Size())));
    }

    /// Fails for a file that was taken out of the layout.
    void CheckListing(const CRecordedFiles& records, const std::set<const SContentFile*>& listed) {
        for (const SContentFile& record : records.All()) {
            const bool wasExported =
                m_kept.Gaps() != nullptr && m_kept.Gaps()->FindFile(record.Sector(), record.Size()) != nullptr;
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
                m_keptFiles.push_back({i, base.AddFile(file.sector * kSectorSize, file.length, file.source)});
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
        return SumOrFail(file, m_operation);
    }

    SEditPlan Plan(CComposedImage& base) {
        if (m_changed.empty() && m_kept.Gaps() != nullptr) {
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
        SDiscMap map = ReadDiscMap(base, m_kept.Gaps() != nullptr ? EMapRule::Complete : EMapRule::ReachableOnly);
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
        if (m_kept.Gaps() != nullptr) {
            ChecksumOf(base, [this] { m_operation.Yield(); });
            ThrowProblemOf(base);
        }
    }

    /// Finds the changed files among those of recorded length, and compares the image if there are none.
    void CheckResult(CComposedImage& base, const SEditPlan& plan) {
        m_kept.Leading().FailIfUnread();
        ThrowProblemOf(base);
        if (m_kept.Gaps() == nullptr) {
            m_report.comparesContent = false;
            CountUnchanged();
            return;
        }
        for (const SKeptFile& kept : m_keptFiles) {
            const SFoundFile& file = m_files[kept.index];
            SChecksum sum = base.FileSum(kept.number);
            if (sum.length != file.length) {
                sum = SumOfFile(file.source);  // another file covers a part of it
            }
            const SExportedFile* const exported = m_kept.Gaps()->FindFile(file.sector, file.length);
            if (exported != nullptr && exported->sum != sum) {
                AddChangedContent(file);
            }
        }
        std::sort(m_report.edits.begin(), m_report.edits.end(),
                  [](const SFileEdit& a, const SFileEdit& b) { return a.from < b.from; });
        const bool isSame = plan.edits.empty() && m_report.edits.empty() && m_kept.IsLeadingUnchanged();
        if ((isSame || m_isExact) && base.Sum() != m_kept.Gaps()->Origin().image) {
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
                Format("%s has changed: an exact rebuild needs unchanged files", file.listedPath->c_str()));
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

    SEditReport Finish() {
        m_report.notices = m_kept.Notices();
        for (const SFileEdit& edit : m_report.edits) {
            m_operation.Notify(LineOf(edit));
        }
        std::string warning;
        for (const std::string& text : m_warnings) {
            warning += (warning.empty() ? "" : "\n") + text;
            m_report.notices.push_back(text);
        }
        if (!warning.empty()) {
            warning += Format("\n\"vantrel iso2iml --extract\" keeps all of it in %s", m_request.gapsPath.c_str());
            m_operation.Warn(warning);
        }
        if (m_request.dryRun) {
            m_operation.Notify(m_request.layoutPath + ": " + SummaryOf(m_report) + "; nothing was written");
            return std::move(m_report);
        }
        const char* const exactText = m_isDvd ? "Rebuilding [dvd] ISO done!" : "Rebuilding [cd] ISO done!";
        m_operation.Complete(m_isExact ? exactText : SummaryOf(m_report).c_str());
        return std::move(m_report);
    }

    const SRebuildRequest& m_request;
    const bool m_isExact;
    const bool m_isDvd;
    COperation& m_operation;
    CPlacements m_placements;
    CLayoutPass m_pass;
    CKeptStructures m_kept;
    std::vector<SFoundFile> m_files;     ///< in the order of the recorded sectors
    std::vector<SKeptFile> m_keptFiles;  ///< files of recorded length, one for each place
    std::vector<std::size_t> m_changed;  ///< files of another length, one for each place
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
