// Extraction of files from an image into a folder. The paths come from the image, so all of them are checked before
// anything is written. Unless the whole extraction succeeds, everything that was written is removed again.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "files/checked_file.h"
#include "files/commit_together.h"
#include "files/new_folders.h"
#include "iso/extent.h"
#include "operation/operation.h"

namespace vantrel {

/// One file of an image.
struct SExtractedFile {
    std::vector<SExtent> extents;                     ///< in the order of the content
    std::string path;                                 ///< folders and name, separated by '\\'
    std::optional<std::int64_t> date = std::nullopt;  ///< for the file, in seconds since 1970 (UTC)
};

struct SExtractionRequest {
    std::string imagePath;            ///< named in messages
    std::vector<std::string> inputs;  ///< The files of the image, which no extracted file may overwrite.
    std::string folder;               ///< With its closing separator. Created if missing.
    EOutputManner manner = EOutputManner::CommitNew;
    std::string existsHint;                 ///< Appended to the message about an existing file: how to replace it.
    std::vector<std::string> otherOutputs;  ///< Files of the same export, which no extracted file may overwrite.
};

class CExtraction {
public:
    CExtraction(const SExtractionRequest& request, CByteSource& image, std::vector<SExtractedFile> files,
                COperation& operation);
    CExtraction(const CExtraction&) = delete;
    CExtraction& operator=(const CExtraction&) = delete;
    ~CExtraction();

    /// Fails for names that leave the folder or that the file system cannot hold; files that clash with each other (on
    /// a disk that ignores case, also files that differ in case only) or with other outputs; existing files unless they
    /// are to be replaced; and files that reach beyond the image. Writes nothing.
    void Check();
    /// Writes all files, one unit of progress each.
    void Write();
    /// Commits a further output; undone with the rest unless Keep() is called.
    void Commit(COutputFile& output);
    /// Keeps everything.
    void Keep();

private:
    void CheckNames();
    void CheckClashes();
    void CheckTargets();
    std::string TargetOf(const std::string& listedPath) const;
    void MakeFolders(const std::string& listedPath);
    void MakeFolderOrFail(const std::string& path);
    void WriteFile(const SExtractedFile& file);
    void CopyExtent(const SExtent& extent, const std::string& path, CCheckedOutput& output);

    const SExtractionRequest& m_request;
    CByteSource& m_image;
    std::vector<SExtractedFile> m_files;
    COperation& m_operation;
    CNewFolders m_newFolders;  // before m_commits, because only empty folders can be removed
    CUndoableCommits m_commits;
    std::string m_lastFolder;
    std::vector<std::uint8_t> m_buffer;
    bool m_kept = false;
};

}  // namespace vantrel
