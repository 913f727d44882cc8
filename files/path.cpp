#include "files/path.h"

#include <algorithm>

#include "files/letter_case.h"
#include "files/native_file.h"
#include "files/utf.h"

namespace vantrel {

namespace {

constexpr std::size_t kLongestBaseName = 30;  // UTF-16 units

#ifdef _WIN32
constexpr std::string_view kSeparators = "\\/";
#else
constexpr std::string_view kSeparators = "/";
#endif

std::size_t DriveLength([[maybe_unused]] std::string_view path) {
#ifdef _WIN32
    return path.size() >= 2 && path[1] == ':' ? 2 : 0;
#else
    return 0;
#endif
}

bool IsHighSurrogate(wchar_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

}  // namespace

bool EqualIgnoringCase(std::string_view first, std::string_view second) {
    return std::equal(first.begin(), first.end(), second.begin(), second.end(),
                      [](char a, char b) { return LowerAscii(a) == LowerAscii(b); });
}

SPathParts SplitPath(std::string_view path) {
    SPathParts parts;
    const std::size_t drive = DriveLength(path);
    parts.drive = path.substr(0, drive);
    path.remove_prefix(drive);
    const std::size_t separator = path.find_last_of(kSeparators);
    const std::size_t nameStart = separator == std::string_view::npos ? 0 : separator + 1;
    parts.folder = path.substr(0, nameStart);
    const std::string_view fileName = path.substr(nameStart);
    const std::size_t dot = std::min(fileName.rfind('.'), fileName.size());
    parts.name = fileName.substr(0, dot);
    parts.extension = fileName.substr(dot);
    return parts;
}

std::string FolderOf(std::string_view path) {
    const SPathParts parts = SplitPath(path);
    return parts.drive + parts.folder;
}

std::string FileNameOf(std::string_view path) {
    const SPathParts parts = SplitPath(path);
    return parts.name + parts.extension;
}

std::string WithExtension(std::string_view path, std::string_view extension) {
    const SPathParts parts = SplitPath(path);
    return parts.drive + parts.folder + parts.name + std::string(extension);
}

std::string WithSeparator(std::string folder) {
    if (!folder.empty() && kSeparators.find(folder.back()) == std::string_view::npos) {
        folder.push_back(kPathSeparator);
    }
    return folder;
}

std::string BaseNameOf(std::string_view fileName) {
    const std::wstring name = WideOf(fileName.substr(0, fileName.find('.')));
    const bool splitsPair = name.size() > kLongestBaseName && IsHighSurrogate(name[kLongestBaseName - 1]);
    return Utf8Of(name.substr(0, splitsPair ? kLongestBaseName - 1 : kLongestBaseName));
}

std::string ResolveFileCase(const std::string& path) {
    if (FileKindOf(path) != EFileKind::Missing) {
        return path;
    }
    const std::string folder = FolderOf(path);
    const std::string wanted = FileNameOf(path);
    for (const std::string& name : ListFolder(folder.empty() ? "." : folder)) {
        if (EqualIgnoringCase(name, wanted)) {
            return folder + name;
        }
    }
    return path;
}

}  // namespace vantrel
