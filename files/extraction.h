// Writing of parts of an image to files below a folder. Their paths come from the image, which nobody vouches for, so
// all of them are checked before anything is written; and what was written disappears again unless all goes well.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "files/commit_together.h"
#include "files/output_file.h"
#include "operation/operation.h"

namespace vantrel {

/// One file of an image.
struct SExtractedFile {
    std::int64_t position;  ///< in the image
    std::int64_t size;      ///< bytes
    std::string path;       ///< folders and name, separated by '\\'
};

struct SExtractionRequest {
    std::string imagePath;  ///< The file that the image is read from: named in messages, never written to.
    std::string folder;     ///< With its closing separator. It is made when it does not exist; its parent must.
    EOutputManner manner = EOutputManner::CommitNew;
    /// Further files that are written at the same time and must not be met by an extracted one.
    std::vector<std::string> otherOutputs;
};

class CExtraction {
public:
    CExtraction(const SExtractionRequest& request, CByteSource& image, std::vector<SExtractedFile> files,
                COperation& operation);
    CExtraction(const CExtraction&) = delete;
    CExtraction& operator=(const CExtraction&) = delete;
    ~CExtraction();

    /// Refuses, before anything is written: names that leave the folder or that the file system cannot hold, files that
    /// clash with each other (on a disk that folds cases, also those that differ in case only) or with other outputs,
    /// existing files unless they are to be replaced, and files that the image is too short to hold.
    void Check();
    /// Writes all files, one unit of progress each.
    void Write();
    /// Gives another output of the same undertaking its name; it disappears with the rest.
    void Commit(COutputFile& output);
    /// From here on everything stays.
    void Keep();

private:
    void CheckNames();
    void CheckClashes();
    void CheckTargets();
    std::string TargetOf(const std::string& listedPath) const;
    void MakeFolders(const std::string& listedPath);
    void MakeTrackedFolder(const std::string& path);
    void WriteFile(const SExtractedFile& file);

    const SExtractionRequest& m_request;
    CByteSource& m_image;
    std::vector<SExtractedFile> m_files;
    COperation& m_operation;
    std::vector<std::string> m_newFolders;
    CUndoableCommits m_commits;
    std::string m_lastFolder;
    std::vector<std::uint8_t> m_piece;  ///< What is copied at once.
    bool m_kept = false;
};

}  // namespace vantrel
