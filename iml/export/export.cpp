#include "iml/export/export.h"

#include <algorithm>

#include "files/checked_file.h"
#include "files/path.h"
#include "iml/export/layout_writer.h"
#include "iml/export/walker.h"
#include "iml/layout/gap_file.h"
#include "iml/layout/layout_names.h"
#include "iso/extraction.h"
#include "iso/volume.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// Whether no rebuild could place the trailing sector of a DVD at the end of the volume.
bool EndsBeyondDiscs(const SWalkedImage& walked) {
    return KindByApplication(walked.mediaId, walked.mediaSub) == ImageKind::Dvd && walked.volumeSectors > kSectorLimit;
}

/// One export by the console program, behind the walk.
class CExport {
public:
    CExport(const SExportRequest& request, const SWalkedImage& walked, COperation& operation)
        : m_request(request), m_walked(walked), m_operation(operation), m_image(operation) {
        m_image.OpenOrFail(ResolveFileCase(request.imagePath), "Cannot open %s", request.imagePath);
        m_imageLength = m_image.SizeOrFail();
    }

    /// Shows notices about everything that the layout cannot represent.
    void NotifyLimits() {
        for (const std::string& notice : m_walked.notices) {
            m_operation.Notify(notice);
        }
        if (KindByApplication(m_walked.mediaId, m_walked.mediaSub) == ImageKind::Unknown) {
            m_operation.Notify("The image is of no known medium; the layout names none and cannot be rebuilt");
        }
        if (EndsBeyondDiscs(m_walked)) {
            m_operation.Notify(
                Format("The volume of %s has %u sectors, more than any disc; its layout cannot be rebuilt",
                       m_request.imagePath.c_str(), m_walked.volumeSectors));
        }
        const auto beyond = std::count_if(m_walked.files.begin(), m_walked.files.end(),
                                          [this](const SWalkedFile& file) { return IsBeyond(file); });
        if (beyond > 0) {
            m_operation.Notify(Format("%s ends before %d of the listed files do", m_request.imagePath.c_str(),
                                      static_cast<int>(beyond)));
        }
    }

    void WriteLayout(
        std::function<void(const SChecksum&)> beforeCommit = [](const SChecksum&) {},
        CommitOutputs commit = CommitTogether) {
        SLayoutRequest layout;
        layout.beforeCommit = std::move(beforeCommit);
        layout.commit = std::move(commit);
        layout.layoutPath = m_request.layoutPath;
        layout.folderText = m_request.folderText;
        layout.leadingSource = ResolveFileCase(m_request.imagePath);
        layout.manner = m_request.manner;
        layout.clock = m_request.clock;
        WriteImlLayout(layout, m_walked, m_operation);
    }

    void WriteLayoutAndFiles() {
        const SExtractionRequest request = ExtractionRequest();
        CExtraction extraction(request, m_image, ExtractedFiles(), m_operation);
        extraction.Check();
        CheckSectors();
        extraction.Write();
        const auto commitAll = [&extraction](std::span<COutputFile* const> outputs, std::string& /*problem*/) {
            for (COutputFile* output : outputs) {
                extraction.Add(*output);
            }
            extraction.Commit();
            return true;
        };
        WriteLayout([&](const SChecksum& layout) { WriteGaps(layout, extraction); }, commitAll);
    }

private:
    /// Whether the image does not hold all of a file, as with audio tracks of a CD or a truncated image. An empty file
    /// counts if its sector exists on no disc, because no layout with it can be rebuilt.
    bool IsBeyond(const SWalkedFile& file) const {
        const bool endsBeyond = file.size > 0 && file.start * kSectorSize + file.size > m_imageLength;
        return endsBeyond || file.start >= kSectorLimit;
    }

    SExtractionRequest ExtractionRequest() const {
        SExtractionRequest extraction;
        extraction.imagePath = m_request.imagePath;
        extraction.inputs = {m_request.imagePath};
        extraction.folder = *m_request.extractionFolder;
        extraction.manner = m_request.manner;
        extraction.existsHint = m_request.existsHint;
        extraction.otherOutputs = {m_request.layoutPath, LeadingPathOf(m_request.layoutPath),
                                   GapPathOf(m_request.layoutPath)};
        return extraction;
    }

    std::vector<SExtractedFile> ExtractedFiles() const {
        std::vector<SExtractedFile> files;
        for (const SWalkedFile& file : m_walked.files) {
            files.push_back({{{file.start, file.size}}, file.path, m_request.keepDates ? file.date : std::nullopt});
        }
        return files;
    }

    /// Fails for layouts that no rebuild would accept. The extraction has checked the files with content.
    void CheckSectors() {
        if (EndsBeyondDiscs(m_walked)) {
            m_operation.Fail(
                Format("%s cannot be exported with its files: its volume has %u sectors, more than any disc",
                       m_request.imagePath.c_str(), m_walked.volumeSectors));
        }
        for (const SWalkedFile& file : m_walked.files) {
            if (file.start >= kSectorLimit) {
                m_operation.Fail(
                    Format("\"%s\" cannot be exported: it is recorded at sector %u, which exists on no disc",
                           file.path.c_str(), file.start));
            }
        }
    }

    /// Stores the areas outside of the leading structures and the files, so that an exact rebuild can restore them.
    void WriteGaps(const SChecksum& layout, CExtraction& extraction) {
        std::vector<SImageArea> covered = {{0, m_walked.headerSectors * kSectorSize}};
        for (const SWalkedFile& file : m_walked.files) {
            covered.push_back({file.start * kSectorSize, file.size});
        }
        const std::vector<SImageArea> areas = AreasWithData(m_image, UncoveredAreas(covered, m_imageLength));
        const std::string path = GapPathOf(m_request.layoutPath);
        COutputFile output;
        if (!output.Open(path, m_request.manner)) {
            m_operation.Fail(CreationProblem(path));
        }
        const SGapOrigin origin = {ChecksumOf(m_image, [this] { m_operation.Yield(); }), layout};
        const bool complete = WriteGapFile(m_image, origin, areas, output) && origin.image.length == m_imageLength;
        m_image.FailIfUnread();
        if (!complete) {
            m_operation.Fail(Format("Cannot read all of %s", m_request.imagePath.c_str()));
        }
        extraction.Add(output);
    }

    const SExportRequest& m_request;
    const SWalkedImage& m_walked;
    COperation& m_operation;
    CCheckedInput m_image;
    std::int64_t m_imageLength = 0;
};

}  // namespace

std::string LayoutPathOf(const std::string& folder, const std::string& fileName) {
    return folder + SplitPath(fileName).name + ".iml";
}

bool IsoToIml(const std::string& folder, const std::string& fileName, const ChooseImlPath& chooseImlPath,
              COperation& operation, const std::function<SLayoutTime()>& clock) {
    const SWalkFilePaths sideFiles = WindowWalkFiles(folder, fileName);
    const SWalkedImage walked = WalkIsoImage({folder + fileName, sideFiles}, operation);
    const std::optional<SChosenLayout> chosen = chooseImlPath();
    if (!chosen) {
        return false;
    }
    SLayoutRequest layout;
    layout.layoutPath = chosen->layoutPath;
    layout.folderText = chosen->folderText;
    layout.leadingSource = sideFiles.headerCopy;
    layout.sideFiles = sideFiles;
    layout.clock = clock;
    WriteImlLayout(layout, walked, operation);
    return true;
}

void ExportImage(const SExportRequest& request, COperation& operation) {
    const SWalkedImage walked = WalkIsoImage({request.imagePath, std::nullopt, true}, operation);
    CExport conversion(request, walked, operation);
    conversion.NotifyLimits();
    if (request.extractionFolder) {
        conversion.WriteLayoutAndFiles();
    } else {
        conversion.WriteLayout();
    }
}

}  // namespace vantrel
