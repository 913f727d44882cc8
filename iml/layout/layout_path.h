// The paths in a layout, which have the form of Windows on every system.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace vantrel {

/// How a rebuild shows the file that it reads: "%s\..\%s%s" of the drive, name and extension of the path.
std::string ShownPath(std::string_view path);

/// Finds the files of a layout on the disk.
class CPathResolver {
public:
    /// `folder` ends in a separator. If it is empty, paths are used as written.
    explicit CPathResolver(std::string folder) : m_folder(std::move(folder)) {}

    /// The path of the file that `path` names, relative to the folder unless it is absolute. On POSIX, a backslash
    /// separates folders too, and every name is first matched exactly, then ignoring the case of ASCII letters, then
    /// without a dot at its end. Names that do not exist keep their spelling.
    std::string Resolve(const std::string& path);

private:
    std::string Find(const std::string& folder, const std::string& name);

    std::string m_folder;
    /// Names in the folders that were searched, by their lower-case spelling.
    std::map<std::string, std::map<std::string, std::string>> m_namesOf;
};

}  // namespace vantrel
