#include "iso/extraction.h"

#include <algorithm>

#include "files/leftovers.h"
#include "files/path.h"
#include "iso/extracted_path.h"
#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::size_t kBufferSize = 1U << 20U;

/// `folder` if it exists, else the nearest folder above it that does.
std::string ExistingFolder(const std::string& folder) {
    std::string existing = folder;
    while (!existing.empty() && FileKindOf(existing) != EFileKind::Folder) {
        existing = FolderOf(existing.substr(0, existing.size() - 1));
    }
    return existing;
}

}  // namespace

CExtraction::CExtraction(const SExtractionRequest& request, CByteSource& image, std::vector<SExtractedFile> files,
                         COperation& operation)
    : m_request(request), m_image(image), m_files(std::move(files)), m_operation(operation), m_buffer(kBufferSize) {}

void CExtraction::Check() {
    FinishKilled();
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
                m_operation.Fail(Format("\"%s\" cannot be extracted: it %s", file.path.c_str(), problem.c_str()));
            }
        }
        if (std::any_of(file.extents.begin(), file.extents.end(),
                        [imageSize](const SExtent& extent) { return extent.size > 0 && extent.End() > imageSize; })) {
            m_operation.Fail(Format("\"%s\" cannot be extracted: the image ends before it does", file.path.c_str()));
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
    m_operation.Fail(Format("\"%s\" and \"%s\" cannot both be extracted: they would be the same file on this disk",
                            clash.first.c_str(), clash.second.c_str()));
}

void CExtraction::CheckTargets() {
    std::vector<std::string> own = m_request.otherOutputs;
    std::sort(own.begin(), own.end());
    for (const SExtractedFile& file : m_files) {
        const std::string target = TargetOf(file.path);
        if (std::binary_search(own.begin(), own.end(), target)) {
            m_operation.Fail(Format("\"%s\" cannot be extracted: %s is another output of the same export",
                                    file.path.c_str(), target.c_str()));
        }
        const EFileKind kind = FileKindOf(target);
        if (kind == EFileKind::Missing) {
            continue;
        }
        if (kind != EFileKind::File) {
            m_operation.Fail(
                Format("\"%s\" cannot be extracted: %s exists and is not a file", file.path.c_str(), target.c_str()));
        }
        if (std::any_of(m_request.inputs.begin(), m_request.inputs.end(),
                        [&target](const std::string& input) { return IsSameFile(target, input); })) {
            m_operation.Fail(
                Format("\"%s\" cannot be extracted: %s is a file of the image", file.path.c_str(), target.c_str()));
        }
        if (!Replaces(m_request.manner)) {
            m_operation.Fail(Format("%s exists already%s", target.c_str(), m_request.existsHint.c_str()));
        }
    }
}

std::string CExtraction::TargetOf(const std::string& listedPath) const {
    std::string path = listedPath;
    std::replace(path.begin(), path.end(), '\\', kPathSeparator);
    return m_request.folder + path;
}

/// A killed extraction waited in the nearest folder that existed then.
void CExtraction::FinishKilled() const {
    std::string folder = m_request.folder;
    RemoveLeftovers(folder);
    while (!folder.empty()) {
        folder = FolderOf(folder.substr(0, folder.size() - 1));
        RemoveLeftovers(folder);
    }
}

/// The folder in which everything waits for its names: that of the other outputs if it also holds the files' folder.
std::string CExtraction::Base() const {
    const std::string existing = ExistingFolder(m_request.folder);
    const std::string other = m_request.otherOutputs.empty() ? existing : FolderOf(m_request.otherOutputs.front());
    return LiesBelow(other, m_request.folder) ? other : existing;
}

std::string CExtraction::PlaceFor(const std::string& target) {
    std::string place = m_commit.PlaceFor(target);
    if (place.empty()) {
        m_operation.Fail(m_commit.Problem());
    }
    return place;
}

void CExtraction::Write() {
    if (!m_commit.Open(Base())) {
        m_operation.Fail(m_commit.Problem());
    }
    if (FileKindOf(m_request.folder) == EFileKind::Missing && !m_request.folder.empty()) {
        PlaceFor(m_request.folder);  // the folder appears even without files
    }
    CProgress progress(m_operation, static_cast<std::int64_t>(m_files.size()));
    for (const SExtractedFile& file : m_files) {
        WriteFile(file);
        progress.Advance();
    }
}

void CExtraction::WriteFile(const SExtractedFile& listed) {
    CCheckedOutput output(m_operation);
    const std::string target = TargetOf(listed.path);
    const std::string place = PlaceFor(target);
    if (!output.OpenAt(place, target, m_request.manner)) {
        m_operation.Fail(CreationProblem(target));
    }
    for (const SExtent& extent : listed.extents) {
        CopyExtent(extent, listed.path, output);
    }
    Add(output);
    if (listed.date) {
        SetFileDate(place, *listed.date);
    }
}

void CExtraction::CopyExtent(const SExtent& extent, const std::string& path, CCheckedOutput& output) {
    for (std::int64_t done = 0; done < extent.size;) {
        const auto left = static_cast<std::size_t>(extent.size - done);
        const auto piece = std::span(m_buffer).first(std::min(left, kBufferSize));
        if (output.Copy(m_image, extent.Position() + done, piece) != piece.size()) {
            m_operation.Fail(Format("Cannot read \"%s\" from %s", path.c_str(), m_request.imagePath.c_str()));
        }
        output.FailIfUnwritten();
        done += static_cast<std::int64_t>(piece.size());
        m_operation.Yield();
    }
}

void CExtraction::Add(COutputFile& output) {
    if (!m_commit.Add(output)) {
        m_operation.Fail(m_commit.Problem());
    }
}

void CExtraction::Commit() {
    if (!m_commit.Commit()) {
        m_operation.Fail(m_commit.Problem());
    }
    m_commit.Keep();
}

}  // namespace vantrel
