// Writing of the files that an export lists, so that the layout can be rebuilt at once, and of what lies between them.
#pragma once

#include <string>
#include <vector>

#include "files/input_file.h"
#include "files/output_file.h"
#include "iml/gap_file.h"
#include "operation/operation.h"

namespace vantrel {

struct SExtractionRequest {
    std::string imagePath;
    std::string fileListPath;
    std::string headerCopyPath;
    std::string folder;  ///< With its closing separator. It is made when it does not exist; its parent must.
    std::string gapPath;
    EOutputManner manner = EOutputManner::CommitNew;
    /// Further files that belong to the export and must not be met by an extracted one.
    std::vector<std::string> otherOutputs;
};

/// One extraction. What it has written disappears with it, folders included, unless Keep is called.
class CExtraction {
public:
    CExtraction(const SExtractionRequest& request, COperation& operation);
    CExtraction(const CExtraction&) = delete;
    CExtraction& operator=(const CExtraction&) = delete;
    ~CExtraction();

    /// Reads the list and refuses, before anything is written: names that leave the folder or that the file system
    /// cannot hold, files that clash with each other (on a disk that folds cases, also those that differ in case only)
    /// or with other outputs, existing files unless they are to be replaced, and files that the image is too short to
    /// hold.
    void Check();
    /// Writes all files and the gap file.
    void Write();
    void Keep();

private:
    struct SListed {
        std::int64_t position;  ///< in the image
        std::int64_t size;      ///< bytes
        std::string path;       ///< as listed
    };

    void ReadList();
    void CheckNames();
    void CheckClashes();
    void CheckTargets();
    std::string TargetOf(const std::string& listedPath) const;
    void MakeFolders(const std::string& listedPath);
    void MakeTrackedFolder(const std::string& path);
    void WriteFile(const SListed& listed);
    void WriteGaps();
    void CommitTracked(COutputFile& output);

    const SExtractionRequest& m_request;
    COperation& m_operation;
    CInputFile m_image;
    std::vector<SListed> m_files;
    std::vector<std::string> m_newFolders;
    std::vector<std::string> m_newFiles;
    std::string m_lastFolder;
    bool m_kept = false;
};

}  // namespace vantrel
