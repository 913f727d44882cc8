#include "files/extraction.h"

#include <algorithm>

#include "files/extracted_path.h"
#include "files/path.h"
#include "operation/frame.h"

namespace vantrel {

namespace {

constexpr std::size_t kPieceSize = 1U << 20U;

/// The folder that exists at or above `folder`.
std::string ExistingFolder(const std::string& folder) {
    return FileKindOf(folder) == EFileKind::Folder ? folder : FolderOf(folder.substr(0, folder.size() - 1));
}

}  // namespace

CExtraction::CExtraction(const SExtractionRequest& request, CByteSource& image, std::vector<SExtractedFile> files,
                         COperation& operation)
    : m_request(request), m_image(image), m_files(std::move(files)), m_operation(operation), m_piece(kPieceSize) {}

CExtraction::~CExtraction() {
    if (m_kept) {
        return;
    }
    m_commits.Undo();  // before the folders, which must be empty
    std::for_each(m_newFolders.rbegin(), m_newFolders.rend(), RemoveFolder);
}

void CExtraction::Check() {
    CheckNames();
    CheckClashes();
    CheckTargets();
}

void CExtraction::CheckNames() {
    const std::int64_t imageSize = m_image.Size();
    for (const SExtractedFile& file : m_files) {
        for (const std::string& name : NamesOf(file.path)) {
            const std::string problem = NameProblem(name, kSystemNameRules);
            if (!problem.empty()) {
                m_operation.Fail("\"" + file.path + "\" cannot be extracted: it " + problem);
            }
        }
        if (file.size > 0 && file.position + file.size > imageSize) {
            m_operation.Fail("\"" + file.path + "\" cannot be extracted: the image ends before it does");
        }
    }
}

void CExtraction::CheckClashes() {
    std::vector<std::string> paths;
    paths.reserve(m_files.size());
    for (const SExtractedFile& file : m_files) {
        paths.push_back(file.path);
    }
    SPathClash clash = FindClash(paths, false);
    if (clash.second.empty()) {
        clash = FindClash(paths, true);
        if (clash.second.empty() || !FolderFoldsCase(ExistingFolder(m_request.folder))) {
            return;
        }
    }
    m_operation.Fail("\"" + clash.first + "\" and \"" + clash.second +
                     "\" cannot both be extracted: they would be the same file on this disk");
}

void CExtraction::CheckTargets() {
    std::vector<std::string> own = m_request.otherOutputs;
    std::sort(own.begin(), own.end());
    for (const SExtractedFile& file : m_files) {
        const std::string target = TargetOf(file.path);
        if (std::binary_search(own.begin(), own.end(), target)) {
            m_operation.Fail("\"" + file.path + "\" cannot be extracted: " + target +
                             " is written at the same time for another purpose");
        }
        const EFileKind kind = FileKindOf(target);
        if (kind == EFileKind::Missing) {
            continue;
        }
        if (kind != EFileKind::File || IsSameFile(target, m_request.imagePath)) {
            m_operation.Fail("\"" + file.path + "\" cannot be extracted: " + target +
                             (kind == EFileKind::File ? " is the image" : " exists and is not a file"));
        }
        if (m_request.manner == EOutputManner::CommitNew) {
            m_operation.Fail(target + " exists already; -f replaces it");
        }
    }
}

std::string CExtraction::TargetOf(const std::string& listedPath) const {
    std::string path = listedPath;
    std::replace(path.begin(), path.end(), '\\', kPathSeparator);
    return m_request.folder + path;
}

void CExtraction::Keep() {
    m_commits.Keep();
    m_kept = true;
}

void CExtraction::MakeTrackedFolder(const std::string& path) {
    if (FileKindOf(path) == EFileKind::Folder) {
        return;
    }
    if (!MakeFolder(path)) {
        m_operation.Fail("Cannot make the folder " + path + ": " + LastFileError());
    }
    m_newFolders.push_back(path);
}

void CExtraction::MakeFolders(const std::string& listedPath) {
    const std::string folder = listedPath.substr(0, listedPath.rfind('\\') + 1);
    if (folder == m_lastFolder) {
        return;
    }
    for (std::size_t end = folder.find('\\'); end != std::string::npos; end = folder.find('\\', end + 1)) {
        MakeTrackedFolder(TargetOf(folder.substr(0, end)));
    }
    m_lastFolder = folder;
}

void CExtraction::Write() {
    if (!m_request.folder.empty()) {
        MakeTrackedFolder(m_request.folder);
    }
    m_operation.StartProgress(ProgressRange(static_cast<std::int64_t>(m_files.size())), EProgressFill::Dvd);
    for (const SExtractedFile& file : m_files) {
        MakeFolders(file.path);
        WriteFile(file);
        m_operation.StepProgress();
        m_operation.PumpMessages();
    }
}

void CExtraction::WriteFile(const SExtractedFile& listed) {
    COutputFile output;
    const std::string target = TargetOf(listed.path);
    if (!output.Open(target, m_request.manner)) {
        m_operation.Fail("Cannot create " + target + ": " + LastFileError());
    }
    for (std::int64_t done = 0; done < listed.size;) {
        const std::int64_t rest = listed.size - done;
        const auto piece = std::span(m_piece).first(static_cast<std::size_t>(std::min<std::int64_t>(rest, kPieceSize)));
        if (output.Copy(m_image, listed.position + done, piece) != piece.size()) {
            m_operation.Fail("Cannot read \"" + listed.path + "\" from " + m_request.imagePath);
        }
        if (output.HasFailed()) {
            m_operation.Fail(output.FailureText());
        }
        done += static_cast<std::int64_t>(piece.size());
        m_operation.PumpMessages();
    }
    Commit(output);
}

void CExtraction::Commit(COutputFile& output) {
    std::string failure;
    if (!m_commits.Commit(output, failure)) {
        m_operation.Fail(failure);
    }
}

}  // namespace vantrel
