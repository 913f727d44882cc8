// Names and paths: splitting, joining and the base names of outputs.
#pragma once

#include <string>
#include <string_view>

namespace vantrel {

#ifdef _WIN32
inline constexpr char kPathSeparator = '\\';
#else
inline constexpr char kPathSeparator = '/';
#endif

/// The parts of a path; joined, they give the path again. POSIX paths have no drive.
struct SPathParts {
    std::string drive;      ///< "C:" or empty
    std::string folder;     ///< up to and including the last separator
    std::string name;       ///< without extension
    std::string extension;  ///< from the last '.' of the file name, or empty
};

SPathParts SplitPath(std::string_view path);

/// The folder of a path with drive and closing separator; empty if the path has none.
std::string FolderOf(std::string_view path);

/// The file name of a path, including the extension.
std::string FileNameOf(std::string_view path);

/// The path with its extension replaced by another one, or with one added: "a.b.iso" becomes "a.b.cso".
std::string WithExtension(std::string_view path, std::string_view extension);

/// `folder` with a closing separator; an empty text stays empty.
std::string WithSeparator(std::string folder);

/// The file name up to its first '.', and at most 30 UTF-16 units without splitting a surrogate pair. The window forms
/// the names of its outputs from it.
std::string BaseNameOf(std::string_view fileName);

/// Whether two texts are equal except for the case of ASCII letters.
bool EqualIgnoringCase(std::string_view first, std::string_view second);

/// `path` if it exists; otherwise the path of a file in the same folder whose name differs only in the case of ASCII
/// letters; otherwise `path`. Lets names in lower case find their files on case-sensitive file systems.
std::string ResolveFileCase(const std::string& path);

}  // namespace vantrel
