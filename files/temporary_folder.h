// An empty folder that exists only as long as its object.
#pragma once

#include <string>

namespace vantrel {

class CTemporaryFolder {
public:
    CTemporaryFolder() = default;
    CTemporaryFolder(const CTemporaryFolder&) = delete;
    CTemporaryFolder& operator=(const CTemporaryFolder&) = delete;
    /// Removes the folder, which must be empty.
    ~CTemporaryFolder();

    /// Makes a new folder in `parent`, which ends in a separator or is empty. Returns false if that
    /// fails.
    bool MakeIn(const std::string& parent);

    /// The folder with its closing separator.
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

}  // namespace vantrel
