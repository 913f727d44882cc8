#include "files/temporary_path.h"

#include <random>

#include "files/native_file.h"
#include "files/retry.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::string_view kBeginning = ".vantrel-";
constexpr std::string_view kEnd = ".tmp";
constexpr std::size_t kDigits = 8;

}  // namespace

std::string TemporaryPathIn(const std::string& folder) {
    std::random_device random;
    return folder + Format(".vantrel-%08x.tmp", random());
}

bool IsTemporaryName(std::string_view name) {
    return name.size() == kBeginning.size() + kDigits + kEnd.size() && name.starts_with(kBeginning) &&
           name.ends_with(kEnd) &&
           name.substr(kBeginning.size(), kDigits).find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

void RemoveTemporary(const std::string& path) {
    TryBriefly([&path] { return RemoveFile(path) || FileKindOf(path) == EFileKind::Missing; });
}

bool RemoveEmptied(const std::string& path) {
    return TryBriefly([&path] { return RemoveFolder(path); });
}

}  // namespace vantrel
