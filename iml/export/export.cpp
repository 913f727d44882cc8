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

constexpr std::size_t kBufferSize = 1U << 20U;

/// Whether no rebuild could place the trailing sector of a DVD at the end of the volume.
bool EndsBeyondDiscs(const SWalkedImage& walked) {
    return KindByApplication(walked.mediaId, walked.mediaSub) == ImageKind::Dvd && walked.volumeSectors > kSectorLimit;
}

/// One export by the console program, behind the walk.
class CExport {
public:
    CExport(const SExportRequest& request, const SWalkedImage& walked, COperation& operation)
        : m_request(request), m_walked(walked), m_operation(operation), m_image(operation) {
        m_image.AttachOrOpen(request.image, ResolveFileCase(request.imagePath), "Cannot open %s");
        m_imageLength = m_image.SizeOrFail();
    }

    /// Tells everything that the layout cannot represent. What keeps it from being rebuilt counts as a warning.
    void NotifyLimits() {
        for (const std::string& notice : m_walked.notices) {
            m_operation.Notify(notice);
        }
        if (KindByApplication(m_walked.mediaId, m_walked.mediaSub) == ImageKind::Unknown) {
            m_operation.Warn("The image is of no known medium; the layout names none and cannot be rebuilt");
        }
        if (EndsBeyondDiscs(m_walked)) {
            m_operation.Warn(Format("The volume of %s has %u sectors, more than any disc; its layout cannot be rebuilt",
                                    m_request.imagePath.c_str(), m_walked.volumeSectors));
        }
        const auto beyond = std::count_if(m_walked.files.begin(), m_walked.files.end(),
                                          [this](const SWalkedFile& file) { return IsBeyond(file); });
        if (beyond > 0) {
            m_operation.Warn(Format("%s ends before %d of the listed files do", m_request.imagePath.c_str(),
                                    static_cast<int>(beyond)));
        }
    }

    void WriteLayout() { WriteLayout(LayoutRequest()); }

    void WriteLayoutAndFiles() {
        const SExtractionRequest request = ExtractionRequest();
        CExtraction extraction(request, m_image, ExtractedFiles(), m_operation);
        extraction.Check();
        CheckSectors();
        extraction.Write();
        SLayoutRequest layout = LayoutRequest();
        layout.beforeCommit = [&](const SChecksum& text, const SChecksum& leading) {
            WriteGaps(text, leading, extraction);
        };
        layout.commit = [&extraction](std::span<COutputFile* const> outputs, std::string& /*problem*/) {
            for (COutputFile* output : outputs) {
                extraction.Add(*output);
            }
            extraction.Commit();
            return true;
        };
        WriteLayout(layout);
    }

private:
    SLayoutRequest LayoutRequest() const {
        SLayoutRequest layout;
        layout.layoutPath = m_request.layoutPath;
        layout.folderText = m_request.folderText;
        layout.leadingSource = ResolveFileCase(m_request.imagePath);
        layout.leadingImage = m_request.image;
        layout.manner = m_request.manner;
        layout.clock = m_request.clock;
        return layout;
    }

    void WriteLayout(const SLayoutRequest& layout) { WriteImlLayout(layout, m_walked, m_operation); }

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

    /// Stores the areas outside of the leading structures and the files, and the checksums, so that a rebuild can
    /// restore the image and recognise changed files.
    void WriteGaps(const SChecksum& layout, const SChecksum& leading, CExtraction& extraction) {
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
        std::vector<SExportedFile> files;
        const SGapOrigin origin = {SumImage(files), layout, leading};
        const bool complete =
            WriteGapFile(m_image, origin, areas, std::move(files), output) && origin.image.length == m_imageLength;
        m_image.FailIfUnread();
        if (!complete) {
            m_operation.Fail(Format("Cannot read all of %s", m_request.imagePath.c_str()));
        }
        extraction.Add(output);
    }

    /// Checksums of the image and of its listed files. Reads the image once; of files that overlap, the later ones are
    /// read again.
    SChecksum SumImage(std::vector<SExportedFile>& files) {
        SChecksum image;
        for (const SWalkedFile& file : m_walked.files) {
            const std::int64_t start = file.start * kSectorSize;
            const bool isSame =
                !files.empty() && files.back().sector == file.start && files.back().sum.length == file.size;
            if (file.size == 0 || isSame) {
                continue;
            }
            const bool isNext = start >= image.length;
            if (isNext) {
                image.Append(SumArea(image.length, start));
            }
            files.push_back({file.start, SumArea(start, start + file.size)});
            if (isNext) {
                image.Append(files.back().sum);
            }
        }
        image.Append(SumArea(image.length, m_imageLength));
        return image;
    }

    SChecksum SumArea(std::int64_t position, std::int64_t end) {
        SChecksum sum;
        while (position < end) {
            const auto piece = std::span(m_buffer).first(
                static_cast<std::size_t>(std::min<std::int64_t>(end - position, std::ssize(m_buffer))));
            const std::size_t count = m_image.ReadAt(position, piece);
            sum.Add(piece.first(count));
            position = count < piece.size() ? end : position + static_cast<std::int64_t>(count);
            m_operation.Yield();
        }
        return sum;
    }

    const SExportRequest& m_request;
    const SWalkedImage& m_walked;
    COperation& m_operation;
    CCheckedInput m_image;
    std::int64_t m_imageLength = 0;
    std::vector<std::uint8_t> m_buffer = std::vector<std::uint8_t>(kBufferSize);
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
    const SWalkedImage walked = WalkIsoImage({request.imagePath, std::nullopt, true, request.image}, operation);
    CExport conversion(request, walked, operation);
    conversion.NotifyLimits();
    if (request.extractionFolder) {
        conversion.WriteLayoutAndFiles();
    } else {
        conversion.WriteLayout();
    }
}

}  // namespace vantrel
