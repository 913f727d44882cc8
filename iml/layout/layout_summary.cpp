#include "iml/layout/layout_summary.h"

#include "files/input_file.h"
#include "files/path.h"
#include "files/refused.h"
#include "iml/layout/layout_check.h"
#include "iml/layout/layout_names.h"
#include "iml/layout/layout_path.h"
#include "iml/layout/layout_reader.h"
#include "iml/layout/recorded_files.h"
#include "iso/iso9660.h"

namespace vantrel {

namespace {

std::string MediaName(char letter) {
    switch (letter) {
        case 'C':
        case '\r':
            return "CD";
        case 'U':
            return "UMD";
        case 'D':
            return "DVD";
        default:
            return {};
    }
}

/// A layout shortens the range of a file that shares its place; the directory records have all of it.
SLayoutFile WithRecordedRange(SLayoutFile file, const CRecordedFiles& records) {
    const SContentFile* const record =
        records.Find(file.path, static_cast<std::uint32_t>(file.first), static_cast<std::uint32_t>(file.last));
    if (record != nullptr) {
        file.first = static_cast<std::int32_t>(record->Sector());
    }
    return file;
}

void ReadFiles(CInputFile& layout, const SListHead& head, std::int32_t count, CPathResolver& resolver,
               const CRecordedFiles& records, SLayoutSummary& summary) {
    CTextReader text = TextReaderOf(layout, head.entriesPosition);
    CLineBuffer line;
    for (std::int32_t i = 0; i < count; ++i) {
        const bool read = text.ReadLine(line) && LooksLikeEntry(line);
        const std::optional<SListedFile> listed = read ? ListedFileOf(line) : std::nullopt;
        if (!listed) {
            return;
        }
        SLayoutFile file = WithRecordedRange({listed->path, listed->first, listed->last, false, 0}, records);
        const std::string path = resolver.Resolve(file.path);
        file.size = FileSizeOf(path);
        file.found = file.size >= 0;
        summary.files.push_back(std::move(file));
    }
}

void RefuseIfUnread(const CInputFile& layout) {
    if (layout.HasFailed()) {
        throw CRefused(layout.Problem());
    }
}

}  // namespace

bool SLayoutFile::Fits() const {
    const std::int64_t sectors = std::int64_t{last} - first + 1;
    return size <= sectors * kSectorSize;
}

std::string FindLeadingStructures(const std::string& layoutPath) {
    const std::string folder = FolderOf(layoutPath);
    std::string byBase = ResolveFileCase(folder + BaseNameOf(FileNameOf(layoutPath)) + ".ims");
    CInputFile layout;
    if (!layout.Open(layoutPath)) {
        const std::string problem = layoutPath + ": " + LastFileError();
        if (FileKindOf(layoutPath) == EFileKind::Missing) {
            return byBase;
        }
        throw CRefused(problem);
    }
    const std::string named = LeadingNameIn(layout);
    RefuseIfUnread(layout);
    for (const std::string& path : {named.empty() ? byBase : ResolveFileCase(folder + named), byBase,
                                    ResolveFileCase(LeadingPathOf(layoutPath))}) {
        if (FileKindOf(path) != EFileKind::Missing) {
            return path;
        }
    }
    return byBase;
}

SLayoutSummary SummarizeLayout(const std::string& layoutPath, const std::string& filesFolder) {
    CInputFile layout;
    if (!layout.Open(layoutPath)) {
        throw CRefused(layoutPath + ": " + LastFileError());
    }
    SLayoutSummary summary;
    const char letter = MediaLetterOf(layout);
    summary.media = MediaName(letter);
    const SLayoutShape& shape = ShapeOf(letter);
    const std::optional<std::int64_t> start = FindListHead(layout, shape.hashes);
    CLineBuffer line;
    const std::optional<SListHead> head = start ? ReadListHead(layout, *start, line) : std::nullopt;
    RefuseIfUnread(layout);
    summary.problem = LayoutProblem(layout);
    if (summary.media.empty() || !head || head->entries < shape.unplaced || head->entries > layout.Size()) {
        throw CRefused(layoutPath + (summary.problem.empty()
                                         ? ": the layout names no known medium or no number of entries"
                                         : ", " + summary.problem));
    }
    summary.entries = head->entries;
    summary.leadingPath = FindLeadingStructures(layoutPath);
    summary.leadingFound = FileKindOf(summary.leadingPath) == EFileKind::File;
    CPathResolver resolver(filesFolder);
    CInputFile leading;
    if (summary.leadingFound && !leading.Open(summary.leadingPath)) {
        throw CRefused(summary.leadingPath + ": " + LastFileError());
    }
    const CRecordedFiles records = summary.leadingFound ? CRecordedFiles(leading) : CRecordedFiles();
    ReadFiles(layout, *head, head->entries - shape.unplaced, resolver, records, summary);
    RefuseIfUnread(layout);
    RefuseIfUnread(leading);
    return summary;
}

}  // namespace vantrel
