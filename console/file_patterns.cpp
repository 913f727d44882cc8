#include "console/file_patterns.h"

#include "files/letter_case.h"
#include "files/native_file.h"
#include "files/path.h"

namespace vantrel {

namespace {

bool HasPattern(std::string_view text) {
    return text.find_first_of("*?") != std::string_view::npos;
}

}  // namespace

bool MatchesPattern(std::string_view name, std::string_view pattern) {
    // Where the rest does not match, the last '*' takes one more character.
    std::size_t n = 0;
    std::size_t p = 0;
    std::size_t star = std::string_view::npos;
    std::size_t starTook = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            starTook = n;
        } else if (p < pattern.size() && (pattern[p] == '?' || LowerAscii(pattern[p]) == LowerAscii(name[n]))) {
            ++p;
            ++n;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            n = ++starTook;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

std::vector<std::string> ExpandPatterns(const std::vector<std::string>& files) {
    std::vector<std::string> expanded;
    for (const std::string& file : files) {
        const std::string folder = FolderOf(file);
        const std::string pattern = FileNameOf(file);
        const std::size_t before = expanded.size();
        if (HasPattern(pattern) && FileKindOf(file) == EFileKind::Missing) {
            for (const std::string& name : ListFolder(folder.empty() ? "." : folder)) {
                if (MatchesPattern(name, pattern)) {
                    expanded.push_back(folder + name);
                }
            }
        }
        if (expanded.size() == before) {
            expanded.push_back(file);
        }
    }
    return expanded;
}

std::vector<std::string> CommandFiles(const std::vector<std::string>& files) {
#ifdef _WIN32
    return ExpandPatterns(files);
#else
    return files;
#endif
}

}  // namespace vantrel
