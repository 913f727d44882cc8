// Names and paths: splitting, joining and the base names from which outputs are named.
#pragma once

#include <string>
#include <string_view>

namespace vantrel {

#ifdef _WIN32
inline constexpr char kPathSeparator = '\\';
#else
inline constexpr char kPathSeparator = '/';
#endif

/// The pieces of a path; put together again they give the path. On POSIX there is no drive.
struct SPathParts {
    std::string drive;      ///< "C:" or empty
    std::string folder;     ///< up to and with the last separator
    std::string name;       ///< without extension
    std::string extension;  ///< from the last '.' of the file name on, or empty
};

SPathParts SplitPath(std::string_view path);

/// The folder of a path with its closing separator, drive included; empty when the path has none.
std::string FolderOf(std::string_view path);

/// The file name of a path, extension included.
std::string FileNameOf(std::string_view path);

/// `folder` with one closing separator; an empty text stays empty.
std::string WithSeparator(std::string folder);

/// The file name up to its first '.', and at most 30 bytes, never ending within a UTF-8 sequence: the name from which
/// the windows's outputs are formed.
std::string BaseNameOf(std::string_view fileName);

/// Whether two texts are the same but for the case of ASCII letters.
bool EqualIgnoringCase(std::string_view first, std::string_view second);

/// `path` when that exists; otherwise the path of a file in the same folder whose name differs in the case of ASCII
/// letters only; otherwise `path`. Images are chosen by folded names, also on disks that tell cases apart.
std::string ResolveFileCase(const std::string& path);

}  // namespace vantrel
