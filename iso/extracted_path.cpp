#include "iso/extracted_path.h"

#include <algorithm>
#include <array>
#include <utility>

#include "files/native_file.h"
#include "files/temporary_folder.h"

namespace vantrel {

namespace {

constexpr char kListSeparator = '\\';
constexpr std::size_t kLongestName = 255;  // bytes on POSIX; Windows counts UTF-16 units, which are never more

char Upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// Disks that ignore case drop the dot that ends a name.
std::string WithoutClosingDots(const std::string& path) {
    std::string result;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const bool endsName = i + 1 == path.size() || path[i + 1] == kListSeparator;
        if (path[i] != '.' || !endsName) {
            result += path[i];
        }
    }
    return result;
}

/// Names of devices, with and without an extension.
bool IsWindowsDevice(std::string_view name) {
    static constexpr std::array<std::string_view, 6> kDevices = {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
    std::string stem = FoldedPath(name.substr(0, name.find('.')));
    stem.erase(stem.find_last_not_of(' ') + 1);
    const bool isNumbered =
        stem.size() == 4 && (stem.starts_with("COM") || stem.starts_with("LPT")) && stem[3] >= '1' && stem[3] <= '9';
    return isNumbered || std::find(kDevices.begin(), kDevices.end(), stem) != kDevices.end();
}

}  // namespace

std::vector<std::string> NamesOf(std::string_view listedPath) {
    std::vector<std::string> names;
    std::size_t start = 0;
    while (start <= listedPath.size()) {
        const std::size_t end = std::min(listedPath.find(kListSeparator, start), listedPath.size());
        names.emplace_back(listedPath.substr(start, end - start));
        start = end + 1;
    }
    return names;
}

std::string NameProblem(std::string_view name, ENameRules rules) {
    if (name.empty()) {
        return "has a folder without a name";
    }
    if (name == "." || name == "..") {
        return "would leave the folder";
    }
    if (name.size() > kLongestName) {
        return "is longer than a file system can hold";
    }
    if (name.find('/') != std::string_view::npos) {
        return "has a '/' in a name";
    }
    if (rules == ENameRules::Windows) {
        const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' '; };
        if (name.find_first_of("<>:\"|?*") != std::string_view::npos ||
            std::any_of(name.begin(), name.end(), isControl)) {
            return "has a character that Windows allows in no name";
        }
        // The system drops one dot both when it writes and when it reads: that of a name without extension.
        const std::string_view stem = name.substr(0, name.size() - (name.back() == '.' ? 1 : 0));
        if (stem.back() == '.' || stem.back() == ' ') {
            return "has a name that ends in dots or a blank";
        }
        if (IsWindowsDevice(name)) {
            return "has the name of a device";
        }
    }
    return {};
}

std::string FoldedPath(std::string_view path) {
    std::string folded(path);
    std::transform(folded.begin(), folded.end(), folded.begin(), Upper);
    return folded;
}

SPathClash FindClash(const std::vector<std::string>& listedPaths, bool foldsCase) {
    std::vector<std::pair<std::string, std::size_t>> sorted;
    sorted.reserve(listedPaths.size());
    for (std::size_t i = 0; i < listedPaths.size(); ++i) {
        std::string key = foldsCase ? WithoutClosingDots(FoldedPath(listedPaths[i])) : listedPaths[i];
        // As the smallest character, the separator sorts a folder's files directly behind a file of the folder's name.
        std::replace(key.begin(), key.end(), kListSeparator, '\0');
        sorted.emplace_back(std::move(key), i);
    }
    std::sort(sorted.begin(), sorted.end());
    for (std::size_t i = 1; i < sorted.size(); ++i) {
        const std::string& before = sorted[i - 1].first;
        const std::string& key = sorted[i].first;
        if (key == before || (key.starts_with(before) && key[before.size()] == '\0')) {
            return {listedPaths[sorted[i - 1].second], listedPaths[sorted[i].second]};
        }
    }
    return {};
}

bool FolderFoldsCase(const std::string& folder) {
    CTemporaryFolder probe;
    if (!probe.MakeIn(folder)) {
        return false;
    }
    std::string name = probe.Path();
    const std::size_t mark = name.rfind("vantrel");
    name[mark] = Upper(name[mark]);
    return FileKindOf(name) == EFileKind::Folder;
}

}  // namespace vantrel
