#include "files/new_folders.h"

#include <algorithm>

#include "files/native_file.h"
#include "files/path.h"

namespace vantrel {

namespace {

std::string WithoutSeparator(std::string path) {
    while (!path.empty() && WithSeparator(path) == path) {
        path.pop_back();
    }
    return path;
}

}  // namespace

bool CNewFolders::Make(const std::string& path) {
    std::vector<std::string> missing;
    for (std::string folder = WithoutSeparator(path); !folder.empty() && FileKindOf(folder) != EFileKind::Folder;
         folder = WithoutSeparator(FolderOf(folder))) {
        missing.push_back(folder);
    }
    for (; !missing.empty(); missing.pop_back()) {
        if (!MakeFolder(missing.back())) {
            m_problem = "Cannot create the folder " + missing.back() + ": " + LastFileError();
            return false;
        }
        m_made.push_back(missing.back());
    }
    return true;
}

bool CNewFolders::Flush() {
    return std::all_of(m_made.begin(), m_made.end(), [this](const std::string& folder) {
        if (FlushFolder(FolderOf(folder))) {
            return true;
        }
        m_problem = "Cannot write the folder " + FolderOf(folder) + ": " + LastFileError();
        return false;
    });
}

void CNewFolders::RemoveEmpty() {
    std::for_each(m_made.rbegin(), m_made.rend(), RemoveFolder);
    m_made.clear();
}

}  // namespace vantrel
