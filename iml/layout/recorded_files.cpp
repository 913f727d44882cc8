#include "iml/layout/recorded_files.h"

#include <algorithm>

#include "iso/path_table.h"
#include "iso/volume.h"

namespace vantrel {

namespace {

constexpr char kSeparator = '\\';

/// Whether a layout gives these sectors to a file: its range, or only its last sector if the file shares its place.
bool FitsRange(const SContentFile& file, std::uint32_t first, std::uint32_t last) {
    const std::int64_t end = file.Sector() + std::max<std::int64_t>(SectorsFor(file.Size()), 1);
    return last == end - 1 && (first == file.Sector() || first == last);
}

}  // namespace

CRecordedFiles::CRecordedFiles(CByteSource& leading)
    : m_contents(ReadTree(leading, ReadPrimaryVolume(leading).rootRecord.extentLocation.Value(), kSeparator, [] {})) {
    for (const SContentFile& file : m_contents.files) {
        m_byPath.emplace(LineName(file.path), &file);
    }
}

const SContentFile* CRecordedFiles::Find(const std::string& path, std::uint32_t first, std::uint32_t last) const {
    std::string rest = path;
    std::replace(rest.begin(), rest.end(), '/', kSeparator);
    while (true) {
        const auto [begin, end] = m_byPath.equal_range(rest);
        const auto found =
            std::find_if(begin, end, [&](const auto& named) { return FitsRange(*named.second, first, last); });
        if (found != end) {
            return found->second;
        }
        const std::size_t separator = rest.find(kSeparator);
        if (separator == std::string::npos) {
            return nullptr;
        }
        rest.erase(0, separator + 1);
    }
}

}  // namespace vantrel
