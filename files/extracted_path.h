// Whether a path that an image names may be written to a disk: paths come from images that nobody vouches for.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantrel {

/// Whose rules for names hold.
enum class ENameRules { Posix, Windows };

#ifdef _WIN32
inline constexpr ENameRules kSystemNameRules = ENameRules::Windows;
#else
inline constexpr ENameRules kSystemNameRules = ENameRules::Posix;
#endif

/// The names of a listed path ("DIR\SUB\NAME"), which '\' separates.
std::vector<std::string> NamesOf(std::string_view listedPath);

/// Why a name can be none of a file or folder, as the rest of a sentence; empty when it can.
std::string NameProblem(std::string_view name, ENameRules rules);

/// What a path becomes where upper and lower case of ASCII letters are the same.
std::string FoldedPath(std::string_view path);

/// Two of the paths that cannot both be written: equal ones, or one that is a folder of the other.
struct SPathClash {
    std::string first;
    std::string second;  ///< empty when no two clash
};

/// Looks for a clash among listed paths, with cases folded when `foldsCase` is set.
SPathClash FindClash(const std::vector<std::string>& listedPaths, bool foldsCase);

/// Whether the disk of an existing folder (with its separator) takes upper and lower case for the same.
bool FolderFoldsCase(const std::string& folder);

}  // namespace vantrel
