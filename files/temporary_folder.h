// A folder for the side files of one console export, which nobody asked for and nobody shall find afterwards.
#pragma once

#include <string>

namespace vantrel {

class CTemporaryFolder {
public:
    CTemporaryFolder() = default;
    CTemporaryFolder(const CTemporaryFolder&) = delete;
    CTemporaryFolder& operator=(const CTemporaryFolder&) = delete;
    /// Removes the folder with the files in it.
    ~CTemporaryFolder();

    /// Makes a new folder in `parent`, which ends in its separator or is empty. False when that cannot be done.
    bool MakeIn(const std::string& parent);

    /// The folder with its closing separator.
    const std::string& Path() const { return m_path; }

private:
    bool Remove() const;

    std::string m_path;
};

}  // namespace vantrel
