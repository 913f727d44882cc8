// The paths that a layout lists, which are written in the manner of Windows whatever system reads them.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace vantrel {

/// "%s\..\%s%s" of a listed path's drive, name and extension: how a rebuild shows the file it reads.
std::string ShownPath(std::string_view path);

/// Finds the files of a layout below a folder.
class CPathResolver {
public:
    /// `folder` ends in a separator; with an empty one, paths are used as they are written.
    explicit CPathResolver(std::string folder) : m_folder(std::move(folder)) {}

    /// The path of the file that `path` names: relative to the folder unless it is absolute. Where the system's
    /// separator is no backslash, a backslash separates folders too, and every name is matched exactly first and then
    /// without regard to the case of ASCII letters. What cannot be found keeps its spelling.
    std::string Resolve(const std::string& path);

private:
    std::string Find(const std::string& folder, const std::string& name);

    std::string m_folder;
    /// Names of the folders that were looked through, by their lower-case spelling.
    std::map<std::string, std::map<std::string, std::string>> m_namesOf;
};

}  // namespace vantrel
