#include "iml/layout/layout_path.h"

#include <algorithm>

#include "files/letter_case.h"
#include "files/native_file.h"
#include "files/path.h"

namespace vantrel {

namespace {

constexpr std::string_view kSeparators = "\\/";

bool HasDrive(std::string_view path) {
    return path.size() >= 2 && path[1] == ':';
}

bool IsAbsolute(std::string_view path) {
    return (!path.empty() && kSeparators.find(path[0]) != std::string_view::npos) ||
           (kPathSeparator == '\\' && HasDrive(path));
}

}  // namespace

std::string ShownPath(std::string_view path) {
    const std::string_view drive = HasDrive(path) ? path.substr(0, 2) : std::string_view();
    const std::size_t separator = path.find_last_of(kSeparators);
    const std::size_t nameStart = separator == std::string_view::npos ? drive.size() : separator + 1;
    return std::string(drive) + "\\..\\" + std::string(path.substr(nameStart));
}

std::string CPathResolver::Find(const std::string& folder, const std::string& name) {
    if (name.empty() || FileKindOf(folder + name) != EFileKind::Missing) {
        return name;
    }
    const auto [known, isNew] = m_namesOf.try_emplace(folder);
    if (isNew) {
        for (const std::string& existing : ListFolder(folder)) {
            known->second.try_emplace(LowerAscii(existing), existing);
        }
    }
    auto found = known->second.find(LowerAscii(name));
    if (found == known->second.end() && name.ends_with('.')) {
        // Some programs drop the dot of a name without extension, and so does Windows.
        found = known->second.find(LowerAscii(name.substr(0, name.size() - 1)));
    }
    return found != known->second.end() ? found->second : name;
}

std::string CPathResolver::Resolve(const std::string& path) {
    if (m_folder.empty()) {
        return path;
    }
    std::string resolved = IsAbsolute(path) ? std::string() : m_folder;
    if (kPathSeparator == '\\') {
        return resolved + path;
    }
    for (std::size_t start = 0; start < path.size();) {
        const std::size_t end = std::min(path.find_first_of(kSeparators, start), path.size());
        resolved += Find(resolved, path.substr(start, end - start));
        if (end < path.size()) {
            resolved.push_back(kPathSeparator);
        }
        start = end + 1;
    }
    return resolved;
}

}  // namespace vantrel
