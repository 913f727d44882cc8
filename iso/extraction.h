// Extraction of files from an image into a folder. The paths come from the image, so all of them are checked before
// anything is written. The files get their names together: all of them appear, or none.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "files/checked_file.h"
#include "files/commit_together.h"
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

    /// Removes what a killed process left in the folder, or finishes it. Fails for names that leave the folder or that
    /// the file system cannot hold; files that clash with each other (on a disk that ignores case, also files that
    /// differ in case only) or with other outputs; existing files unless they are to be replaced; and files that reach
    /// beyond the image. Writes nothing.
    void Check();
    /// Writes all files, one unit of progress each.
    void Write();
    /// Adds an output that gets its name together with the files.
    void Add(COutputFile& output);
    /// Gives everything its name.
    void Commit();

private:
    void CheckNames();
    void CheckClashes();
    void CheckTargets();
    std::string TargetOf(const std::string& listedPath) const;
    void FinishKilled() const;
    std::string Base() const;
    std::string PlaceFor(const std::string& target);
    void WriteFile(const SExtractedFile& file);
    void CopyExtent(const SExtent& extent, const std::string& path, CCheckedOutput& output);

    const SExtractionRequest& m_request;
    CByteSource& m_image;
    std::vector<SExtractedFile> m_files;
    COperation& m_operation;
    CJointCommit m_commit;
    std::vector<std::uint8_t> m_buffer;
};

}  // namespace vantrel
