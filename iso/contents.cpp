#include "iso/contents.h"

#include <algorithm>
#include <deque>

#include "iso/directory_reader.h"
#include "iso/iso9660.h"
#include "iso/volume.h"

namespace vantrel {

namespace {

struct SFolder {
    std::uint32_t extent;
    std::string path;  ///< with its closing '/', empty for the root
};

bool IsDotEntry(std::string_view name) {
    return name.size() == 1 && (name[0] == '\0' || name[0] == '\1');
}

}  // namespace

SContents ReadContents(CByteSource& image) {
    SContents contents;
    CDirectoryReader reader(image);
    std::vector<bool> entered(reader.ImageSectors());
    std::deque<SFolder> waiting;
    const auto enter = [&](std::uint32_t extent, std::string path) {
        if (reader.HasSector(extent) && !entered[extent]) {
            entered[extent] = true;
            ++contents.folders;
            waiting.push_back({extent, std::move(path)});
        }
    };
    enter(ReadPrimaryVolume(image).rootRecord.extentLocation.Value(), "");
    while (!waiting.empty()) {
        const SFolder folder = std::move(waiting.front());
        waiting.pop_front();
        const auto visit = [&](const SDirectoryEntry& entry) {
            const std::string path =
                folder.path + std::string(entry.name.substr(0, entry.name.find(kVersionSeparator)));
            if (IsDotEntry(entry.name) || entry.name.empty() || path.size() > kLongestPath) {
                return;
            }
            const std::uint32_t extent = entry.record.extentLocation.Value();
            if ((entry.record.flags & kFileFlagsDirectory) != 0) {
                enter(extent, path + '/');
                return;
            }
            const std::uint32_t size = entry.record.dataLength.Value();
            contents.files.push_back({path, extent, size, extent * kSectorSize + size <= image.Size()});
        };
        reader.Visit(folder.extent, visit, [] {});
    }
    std::stable_sort(contents.files.begin(), contents.files.end(),
                     [](const SContentFile& a, const SContentFile& b) { return a.sector < b.sector; });
    return contents;
}

}  // namespace vantrel
