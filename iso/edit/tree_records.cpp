#include "iso/edit/tree_records.h"

#include <algorithm>
#include <array>
#include <bit>
#include <numeric>
#include <optional>
#include <set>
#include <span>
#include <string_view>

#include "files/refused.h"
#include "files/utf.h"
#include "iso/path_table.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr char kSeparator = '/';

using Sector = std::array<std::uint8_t, kSectorSize>;

SDirectoryRecord RecordIn(std::span<const std::uint8_t> bytes) {
    std::array<std::uint8_t, sizeof(SDirectoryRecord)> record = {};
    std::copy_n(bytes.begin(), record.size(), record.begin());
    return std::bit_cast<SDirectoryRecord>(record);
}

/// The names of "." and ".." are the bytes 0 and 1 (ECMA-119 6.8.2.2).
bool IsDotName(std::string_view name) {
    return name.size() == 1 && (name[0] == '\0' || name[0] == '\1');
}

std::string DecodedName(std::string_view recorded, ENameCoding coding) {
    std::string name(recorded);
    if (coding == ENameCoding::Ucs2) {
        std::wstring wide;
        for (std::size_t i = 0; i + 1 < recorded.size(); i += 2) {
            wide += static_cast<wchar_t>(static_cast<std::uint8_t>(recorded[i]) << 8U |
                                         static_cast<std::uint8_t>(recorded[i + 1]));
        }
        name = Utf8Of(wide);
    }
    return LineName(name.substr(0, name.find(kVersionSeparator)));
}

const char* ObstacleOf(const SDirectoryRecord& record) {
    if (record.extendedAttributeLength != 0) {
        return "has an extended attribute record";
    }
    return record.fileUnitSize != 0 || record.interleaveGap != 0 ? "is interleaved" : "";
}

class CTreeReader {
public:
    CTreeReader(CByteSource& image, ENameCoding coding)
        : m_image(image), m_imageEnd(SectorsFor(image.Size()) * kSectorSize), m_coding(coding) {}

    STreeRecords Read(const SDirectoryRecord& root) {
        Enter("", {root.extentLocation.Value(), root.dataLength.Value()});
        for (std::size_t i = 0; i < m_tree.folders.size(); ++i) {
            const STreeFolder folder = m_tree.folders[i];  // a copy: the list grows meanwhile
            ReadFolder(folder);
        }
        return std::move(m_tree);
    }

private:
    [[noreturn]] static void Refuse(const std::string& path, const std::string& reason) {
        throw CRefused((path.empty() ? "the root directory" : path) + ": " + reason);
    }

    void Enter(const std::string& path, const SExtent& extent) {
        if (extent.size == 0 || extent.End() > m_imageEnd) {
            Refuse(path, Format("the directory at sector %u lies outside of the image", extent.sector));
        }
        const auto end = static_cast<std::uint32_t>(extent.sector + SectorsFor(extent.size));
        for (std::uint32_t sector = extent.sector; sector < end; ++sector) {
            if (!m_entered.insert(sector).second) {
                Refuse(path, Format("the directory at sector %u contains itself or overlaps another one", sector));
            }
        }
        m_tree.folders.push_back({path, extent});
    }

    void ReadFolder(const STreeFolder& folder) {
        m_continued.reset();
        const auto sectors = static_cast<std::uint32_t>(SectorsFor(folder.extent.size));
        for (std::uint32_t i = 0; i < sectors; ++i) {
            Sector bytes = {};
            const std::int64_t position = folder.extent.Position() + i * kSectorSize;
            m_image.ReadAt(position, bytes);
            ReadSector(folder, bytes, position);
        }
        if (m_continued) {
            Refuse(m_tree.files.back().path, "its last extent is missing");
        }
    }

    void ReadSector(const STreeFolder& folder, const Sector& bytes, std::int64_t position) {
        const bool isFirst = position == folder.extent.Position();
        std::size_t offset = 0;
        while (offset < kDirectoryRecordLimit && bytes[offset] != 0) {
            const SDirectoryRecord record = RecordIn(std::span(bytes).subspan(offset));
            if (record.length > bytes.size() - offset || record.length < sizeof(record) + record.nameLength ||
                record.nameLength == 0) {
                Refuse(folder.path, Format("the directory record at byte %lld does not fit its sector",
                                           static_cast<long long>(position) + static_cast<long long>(offset)));
            }
            const auto* name = reinterpret_cast<const char*>(&bytes[offset]) + sizeof(record);
            if (isFirst && offset == 0 && record.dataLength.Value() != folder.extent.size) {
                Refuse(folder.path, Format("the directory at sector %u has two lengths", folder.extent.sector));
            }
            AddRecord(folder, record, {name, record.nameLength}, position + static_cast<std::int64_t>(offset));
            offset += record.length;
        }
        if (isFirst && offset == 0) {
            Refuse(folder.path, Format("the directory at sector %u is empty", folder.extent.sector));
        }
    }

    void AddRecord(const STreeFolder& folder, const SDirectoryRecord& record, std::string_view recordedName,
                   std::int64_t position) {
        if (IsDotName(recordedName)) {
            return;
        }
        const std::string path = folder.path + DecodedName(recordedName, m_coding);
        if (path.size() > kLongestPath) {
            Refuse(path, "the path is longer than a disc allows");
        }
        const SExtent extent = {record.extentLocation.Value(), record.dataLength.Value()};
        if ((record.flags & kFileFlagDirectory) != 0) {
            Enter(path + kSeparator, extent);
            return;
        }
        if (extent.size > 0 && extent.End() > m_imageEnd) {
            Refuse(path, Format("its %lld bytes at sector %u reach beyond the image",
                                static_cast<long long>(extent.size), extent.sector));
        }
        AddExtent(path, record, extent, position);
    }

    void AddExtent(const std::string& path, const SDirectoryRecord& record, const SExtent& extent,
                   std::int64_t position) {
        if (!m_continued) {
            m_tree.files.push_back({path, {}, position, ObstacleOf(record)});
        } else if (*m_continued != path) {
            Refuse(*m_continued, "its last extent is missing");
        }
        STreeFile& file = m_tree.files.back();
        file.extents.push_back(extent);
        if ((record.flags & kFileFlagContinued) != 0) {
            m_continued = path;
        } else {
            m_continued.reset();
        }
    }

    CByteSource& m_image;
    const std::int64_t m_imageEnd;
    const ENameCoding m_coding;
    STreeRecords m_tree;
    std::set<std::uint32_t> m_entered;
    std::optional<std::string> m_continued;  ///< The file whose next record must follow.
};

}  // namespace

std::int64_t STreeFile::Size() const {
    return std::accumulate(extents.begin(), extents.end(), std::int64_t{0},
                           [](std::int64_t sum, const SExtent& extent) { return sum + extent.size; });
}

STreeRecords ReadTreeRecords(CByteSource& image, const SDirectoryRecord& root, ENameCoding coding) {
    return CTreeReader(image, coding).Read(root);
}

}  // namespace vantrel
