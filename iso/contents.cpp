#include "iso/contents.h"

#include <algorithm>
#include <numeric>
#include <set>

#include "iso/directory_reader.h"
#include "iso/iso9660.h"
#include "iso/recording_date.h"
#include "iso/volume.h"

namespace vantrel {

namespace {

bool IsDotEntry(std::string_view name) {
    return name.size() == 1 && (name[0] == '\0' || name[0] == '\1');
}

class CContentsReader {
public:
    CContentsReader(CByteSource& image, char separator, const std::function<void()>& afterRead)
        : m_image(image), m_separator(separator), m_reader(image), m_afterRead(afterRead) {}

    SContents Read(std::uint32_t root) {
        Enter(root, "");
        for (std::size_t i = 0; i < m_contents.folders.size(); ++i) {
            const SContentFolder folder = m_contents.folders[i];  // a copy: the list grows meanwhile
            m_continues = false;
            m_reader.Visit(
                folder.sector, [&](const SDirectoryEntry& entry) { Visit(folder, entry); }, m_afterRead);
        }
        std::stable_sort(m_contents.files.begin(), m_contents.files.end(),
                         [](const SContentFile& a, const SContentFile& b) { return a.Sector() < b.Sector(); });
        return std::move(m_contents);
    }

private:
    void Enter(std::uint32_t sector, std::string path) {
        if (m_entered.insert(sector).second) {
            m_contents.folders.push_back(
                {std::move(path), sector, m_reader.SectorsOf(sector), m_reader.HasDirectory(sector)});
        }
    }

    void Visit(const SContentFolder& folder, const SDirectoryEntry& entry) {
        const std::string path = folder.path + std::string(entry.name.substr(0, entry.name.find(kVersionSeparator)));
        if (IsDotEntry(entry.name) || entry.name.empty() || path.size() > kLongestPath) {
            return;
        }
        if ((entry.record.flags & kFileFlagDirectory) != 0) {
            Enter(entry.record.extentLocation.Value(), path + m_separator);
            return;
        }
        if (!m_continues || m_contents.files.back().path != path) {
            m_contents.files.push_back({path, 0, {}, true, SecondsOf(entry.record.recordingDate)});
        }
        AddExtent(m_contents.files.back(), entry.record);
    }

    void AddExtent(SContentFile& file, const SDirectoryRecord& record) {
        const SExtent extent = {record.extentLocation.Value(), record.dataLength.Value()};
        file.flags = record.flags;
        file.extents.push_back(extent);
        file.inside = file.inside && extent.End() <= m_image.Size();
        m_continues = (record.flags & kFileFlagContinued) != 0;
    }

    CByteSource& m_image;
    const char m_separator;
    CDirectoryReader m_reader;
    const std::function<void()>& m_afterRead;
    SContents m_contents;
    std::set<std::uint32_t> m_entered;
    bool m_continues = false;  ///< Whether the last record said that its file has another one.
};

}  // namespace

std::int64_t SContentFile::Size() const {
    return std::accumulate(extents.begin(), extents.end(), std::int64_t{0},
                           [](std::int64_t sum, const SExtent& extent) { return sum + extent.size; });
}

bool SContentFile::IsContiguous() const {
    return std::adjacent_find(extents.begin(), extents.end(), [](const SExtent& a, const SExtent& b) {
               return a.size % kSectorSize != 0 || a.sector + SectorsFor(a.size) != b.sector;
           }) == extents.end();
}

SContents ReadContents(CByteSource& image) {
    return ReadTree(image, ReadPrimaryVolume(image).rootRecord.extentLocation.Value(), '/', [] {});
}

SContents ReadTree(CByteSource& image, std::uint32_t root, char separator, const std::function<void()>& afterRead) {
    return CContentsReader(image, separator, afterRead).Read(root);
}

}  // namespace vantrel
