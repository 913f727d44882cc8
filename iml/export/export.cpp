#include "iml/export/export.h"

#include "iso/extraction.h"
#include "files/input_file.h"
#include "files/native_file.h"
#include "files/path.h"
#include "files/temporary_folder.h"
#include "iml/file_list.h"
#include "iml/layout/gap_file.h"
#include "iml/rebuild/layout_pass.h"
#include "iml/export/layout_writer.h"
#include "iml/export/walker.h"
#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// The names of WindowWalk in a folder of their own.
SWalkRequest PrivateWalk(const std::string& imagePath, const std::string& folder) {
    SWalkRequest request = WindowWalk(folder, "image");
    request.imagePath = imagePath;
    request.strict = true;
    return request;
}

SExtractionRequest ExtractionOf(const SExportRequest& request) {
    SExtractionRequest extraction;
    extraction.imagePath = request.imagePath;
    extraction.folder = *request.extractionFolder;
    extraction.manner = request.manner;
    extraction.otherOutputs = {request.layoutPath, LeadingPathOf(request.layoutPath), GapPathOf(request.layoutPath)};
    return extraction;
}

void OpenOrFail(CInputFile& file, const std::string& path, COperation& operation) {
    if (!file.Open(path)) {
        operation.Fail("Cannot open " + path);
    }
}

/// Number of listed files that do not lie in the image as a whole. Tracks beside the data of a CD are listed in that
/// way, and so is what a cut image has lost. Files without content count when they are recorded where no disc reaches,
/// since no layout with them can be rebuilt.
int CountFilesBeyond(const SWalkRequest& walk, COperation& operation) {
    CInputFile list;
    OpenOrFail(list, walk.fileListPath, operation);
    const std::int64_t length = FileSizeOf(ResolveFileCase(walk.imagePath));
    CFileListReader reader(list);
    int beyond = 0;
    for (SFileListLine line; reader.Next(line);) {
        const bool endsBeyond = line.size > 0 && line.start * kSectorSize + line.size > length;
        beyond += endsBeyond || line.start >= kSectorLimit ? 1 : 0;
    }
    if (list.HasFailed() || length < 0) {
        operation.Fail("Cannot read " + (length < 0 ? walk.imagePath : walk.fileListPath) + " in full");
    }
    return beyond;
}

/// Whether no rebuild would put a DVD's trailing sector where the volume ends.
bool EndsBeyondDiscs(const SWalkedImage& image) {
    return MediaOf(image.mediaKey) == EMedia::Dvd && image.volumeSectors > kSectorLimit;
}

void TellDoubts(const SWalkRequest& walk, const SWalkedImage& image, COperation& operation) {
    if (MediaOf(image.mediaKey) == EMedia::Unknown) {
        operation.Notify("The image is of no known medium; the layout names none and cannot be rebuilt");
    }
    if (EndsBeyondDiscs(image)) {
        operation.Notify(Format("The volume of %s has %u sectors, more than any disc; its layout cannot be rebuilt",
                                walk.imagePath.c_str(), image.volumeSectors));
    }
    const int beyond = CountFilesBeyond(walk, operation);
    if (beyond > 0) {
        operation.Notify(Format("%s ends before %d of the listed files do", walk.imagePath.c_str(), beyond));
    }
}

std::vector<SExtractedFile> ReadFileList(const std::string& path, COperation& operation) {
    CInputFile list;
    OpenOrFail(list, path, operation);
    std::vector<SExtractedFile> files;
    CFileListReader reader(list);
    for (SFileListLine line; reader.Next(line);) {
        if (line.NamesFile()) {
            files.push_back({line.start * kSectorSize, line.size, line.path});
        }
    }
    if (list.HasFailed()) {
        operation.Fail("Cannot read " + path + " in full");
    }
    return files;
}

/// Refuses what no rebuild would take. Files with content have been refused before when they do not lie in the image.
void CheckSectors(const SWalkRequest& walk, const SWalkedImage& image, const std::vector<SExtractedFile>& files,
                  COperation& operation) {
    if (EndsBeyondDiscs(image)) {
        operation.Fail(Format("%s cannot be exported with its files: its volume has %u sectors, more than any disc",
                              walk.imagePath.c_str(), image.volumeSectors));
    }
    for (const SExtractedFile& file : files) {
        if (const std::int64_t sector = file.position / kSectorSize; sector >= kSectorLimit) {
            operation.Fail(Format("\"%s\" cannot be exported: it is recorded at sector %lld, which is on no disc",
                                  file.path.c_str(), static_cast<long long>(sector)));
        }
    }
}

/// Stores what lies between the leading sectors and the files, so that an exact rebuild can put it back.
void WriteGaps(const SExportRequest& request, const SWalkRequest& walk, CInputFile& image,
               const std::vector<SExtractedFile>& files, CExtraction& extraction, COperation& operation) {
    const std::int64_t headerLength = FileSizeOf(walk.headerCopyPath);
    if (headerLength < 0) {
        operation.Fail("Cannot open " + walk.headerCopyPath);
    }
    std::vector<SImageArea> covered = {{0, headerLength}};
    for (const SExtractedFile& file : files) {
        covered.push_back({file.position, file.size});
    }
    const std::vector<SImageArea> areas = AreasWithData(image, UncoveredAreas(covered, image.Size()));
    const std::string path = GapPathOf(request.layoutPath);
    COutputFile output;
    if (!output.Open(path, request.manner)) {
        operation.Fail("Cannot create " + path + ": " + LastFileError());
    }
    if (!WriteGapFile(image, areas, output) || image.HasFailed()) {
        operation.Fail("Cannot read " + request.imagePath + " in full");
    }
    extraction.Commit(output);
}

/// The layout with all that it needs to be rebuilt, or nothing of it.
void ExportWithFiles(const SExportRequest& request, const SWalkRequest& walk, const SLayoutRequest& layout,
                     const SWalkedImage& walked, COperation& operation) {
    CInputFile image;
    OpenOrFail(image, ResolveFileCase(request.imagePath), operation);
    const SExtractionRequest extractionRequest = ExtractionOf(request);
    const std::vector<SExtractedFile> files = ReadFileList(walk.fileListPath, operation);
    CExtraction extraction(extractionRequest, image, files, operation);
    extraction.Check();
    CheckSectors(walk, walked, files, operation);
    extraction.Write();
    WriteGaps(request, walk, image, files, extraction, operation);
    WriteImlLayout(layout, walk, walked, operation);
    extraction.Keep();
}

}  // namespace

std::string LayoutPathOf(const std::string& folder, const std::string& fileName) {
    return folder + SplitPath(fileName).name + ".iml";
}

void IsoToIml(const std::string& folder, const std::string& fileName, const ChooseImlPath& chooseImlPath,
              COperation& operation, const std::function<SLocalTime()>& clock) {
    const SWalkRequest walk = WindowWalk(folder, fileName);
    const SWalkedImage image = WalkIsoImage(walk, operation);
    const std::optional<SChosenLayout> chosen = chooseImlPath();
    if (!chosen) {
        operation.EnableCommand(ECommand::Browse, true);
        operation.AcceptDroppedFiles();
        return;
    }
    SLayoutRequest layout;
    layout.layoutPath = chosen->layoutPath;
    layout.folderText = chosen->folderText;
    layout.clock = clock;
    WriteImlLayout(layout, walk, image, operation);
    DisableCommands(operation, {ECommand::IsoToIml, ECommand::Vantrel, ECommand::IsoToBin, ECommand::BinToIso,
                                ECommand::CheckPostgap, ECommand::IsoToDax, ECommand::DaxToIso});
    operation.EnableCommand(ECommand::FullPath, true);
    operation.EnableCommand(ECommand::RelativePath, true);
}

void ExportImage(const SExportRequest& request, COperation& operation) {
    CTemporaryFolder sideFolder;
    if (!sideFolder.MakeIn(FolderOf(request.layoutPath))) {
        operation.Fail("Cannot write " + request.layoutPath + ": " + LastFileError());
    }
    const SWalkRequest walk = PrivateWalk(request.imagePath, sideFolder.Path());
    const SWalkedImage image = WalkIsoImage(walk, operation);
    TellDoubts(walk, image, operation);
    SLayoutRequest layout;
    layout.layoutPath = request.layoutPath;
    layout.folderText = request.folderText;
    layout.manner = request.manner;
    layout.clock = request.clock;
    if (request.extractionFolder) {
        ExportWithFiles(request, walk, layout, image, operation);
    } else {
        WriteImlLayout(layout, walk, image, operation);
    }
}

}  // namespace vantrel
