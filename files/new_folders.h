// Folders that a run makes for its outputs, and removes again if it leaves nothing in them.
#pragma once

#include <string>
#include <vector>

namespace vantrel {

class CNewFolders {
public:
    CNewFolders() = default;
    CNewFolders(const CNewFolders&) = delete;
    CNewFolders& operator=(const CNewFolders&) = delete;
    /// Removes the folders that are still empty.
    ~CNewFolders() { RemoveEmpty(); }

    /// Makes a folder, with the folders above it as far as they are missing. Returns false if that fails; Problem()
    /// then has the cause.
    bool Make(const std::string& path);
    /// Writes the names of the folders to the disk. Failures as above.
    bool Flush();
    /// Removes those of the folders that are empty, the deepest first.
    void RemoveEmpty();

    /// Why the latest call failed, as a text with its path.
    const std::string& Problem() const { return m_problem; }

private:
    std::vector<std::string> m_made;
    std::string m_problem;
};

}  // namespace vantrel
