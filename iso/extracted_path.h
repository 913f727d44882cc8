// Whether a path from an image can be written to a disk. Images are not trusted.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantrel {

/// The system whose rules for file names apply.
enum class ENameRules { Posix, Windows };

#ifdef _WIN32
inline constexpr ENameRules kSystemNameRules = ENameRules::Windows;
#else
inline constexpr ENameRules kSystemNameRules = ENameRules::Posix;
#endif

/// The names of a listed path ("DIR\SUB\NAME"), which '\' separates.
std::vector<std::string> NamesOf(std::string_view listedPath);

/// Why a file or folder cannot have this name, as the predicate of a sentence; empty if it can.
std::string NameProblem(std::string_view name, ENameRules rules);

/// The path with its ASCII letters in upper case, for comparisons on disks that ignore case.
std::string FoldedPath(std::string_view path);

/// Two paths that cannot both be written: equal paths, or a file that is also a folder of the other path.
struct SPathClash {
    std::string first;
    std::string second;  ///< empty if there is no clash
};

/// Finds a clash among listed paths; ignores case and dots at the end of names if `foldsCase` is set.
SPathClash FindClash(const std::vector<std::string>& listedPaths, bool foldsCase);

/// Whether the disk of an existing folder (with its separator) ignores case.
bool FolderFoldsCase(const std::string& folder);

}  // namespace vantrel
