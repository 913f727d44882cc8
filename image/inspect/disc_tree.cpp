#include "image/inspect/disc_tree.h"

#include <algorithm>
#include <set>
#include <span>
#include <utility>

#include "iso/directory_reader.h"
#include "iso/udf/osta_name.h"
#include "iso/volume.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// Records of a tree that are read; no disc has as many.
constexpr std::size_t kMostRecords = 1U << 20U;

bool SameOrders(const SBothOrder32& number) {
    return LoadLe32(number.little) == LoadBe32(number.big);
}

bool SameOrders(const SBothOrder16& number) {
    return number.little[0] == number.big[1] && number.little[1] == number.big[0];
}

/// Big-endian UCS-2, which OSTA names contain behind a byte.
std::string JolietName(std::string_view recorded) {
    std::vector<std::uint8_t> name = {16};
    name.insert(name.end(), recorded.begin(), recorded.end() - static_cast<std::ptrdiff_t>(recorded.size() % 2));
    return NameOfOsta(name).value_or(std::string());
}

void AddExtent(std::vector<SExtent>& extents, const SExtent& extent) {
    if (extent.size == 0) {
        return;
    }
    if (!extents.empty() && extents.back().End() == extent.Position()) {
        extents.back().size += extent.size;
    } else {
        extents.push_back(extent);
    }
}

/// Reads the tree of one volume.
class CTreeReader {
public:
    CTreeReader(CByteSource& image, SIsoVolume& volume, CLimitedLines& problems)
        : m_volume(volume), m_tree(volume.tree), m_problems(problems), m_reader(image) {}

    void Read() {
        Enter({}, m_volume.descriptor.rootRecord.extentLocation.Value());
        for (std::size_t i = 0; i < m_tree.folders.size() && !IsFull(); ++i) {
            const SDiscFolder folder = m_tree.folders[i];  // a copy: the list grows meanwhile
            m_continues = false;
            m_isFirst = true;
            m_reader.Visit(
                folder.sector, [&](const SDirectoryEntry& entry) { Visit(folder, entry); }, [] {});
            if (m_isFirst && m_reader.HasDirectory(folder.sector)) {
                AddMissingSelf(folder);
            }
        }
        if (IsFull()) {
            m_problems.Add(Format("%smore than %zu records in directories: the rest is not checked",
                                  m_tree.prefix.c_str(), kMostRecords));
        }
    }

private:
    bool IsFull() const { return m_tree.files.size() + m_tree.folders.size() > kMostRecords; }

    void Enter(std::string path, std::uint32_t sector) {
        if (!m_entered.insert(sector).second) {
            return;
        }
        m_tree.folders.push_back({std::move(path), sector, m_reader.SectorsOf(sector)});
        if (!m_reader.HasDirectory(sector)) {
            m_problems.Add(Format("%s (sector %u) lies outside the image",
                                  NameOfFolder(m_tree, m_tree.folders.back().path).c_str(), sector));
        }
    }

    void AddMissingSelf(const SDiscFolder& folder) {
        m_problems.Add(Format("%s (sector %u) does not begin with its own record",
                              NameOfFolder(m_tree, folder.path).c_str(), folder.sector));
    }

    std::string NameOf(std::string_view recorded) const {
        std::string name = m_volume.isJoliet ? JolietName(recorded) : std::string(recorded);
        return name.substr(0, name.find(kVersionSeparator));
    }

    void Visit(const SDiscFolder& folder, const SDirectoryEntry& entry) {
        const bool isSelf = entry.name.size() == 1 && entry.name[0] == '\0';
        if (std::exchange(m_isFirst, false) && (!isSelf || entry.record.extentLocation.Value() != folder.sector)) {
            AddMissingSelf(folder);
        }
        const bool isParent = entry.name.size() == 1 && entry.name[0] == '\1';
        const std::string name = isSelf || isParent ? std::string() : NameOf(entry.name);
        const std::string path = folder.path.empty() ? name : name.empty() ? folder.path : folder.path + '/' + name;
        CheckByteOrders(path, entry.record);
        if (isSelf || isParent || entry.name.empty() || path.size() > kLongestPath || IsFull()) {
            return;
        }
        if ((entry.record.flags & kFileFlagDirectory) != 0) {
            Enter(path, entry.record.extentLocation.Value());
        } else {
            AddRecord(path, entry.record);
        }
    }

    void CheckByteOrders(const std::string& path, const SDirectoryRecord& record) {
        const auto check = [&](const SBothOrder32& number, const char* what) {
            if (!SameOrders(number)) {
                m_problems.Add(Format("%s\"/%s\": the %s in its record is %u in one byte order and %u in the other",
                                      m_tree.prefix.c_str(), path.c_str(), what, LoadLe32(number.little),
                                      LoadBe32(number.big)));
            }
        };
        check(record.extentLocation, "sector");
        check(record.dataLength, "length");
    }

    void AddRecord(const std::string& path, const SDirectoryRecord& record) {
        const SExtent extent = {record.extentLocation.Value(), record.dataLength.Value()};
        if (!m_continues || m_tree.files.back().path != path) {
            m_tree.files.push_back({path, {}, extent.sector, 0});
        }
        SDiscFile& file = m_tree.files.back();
        AddExtent(file.extents, extent);
        file.size += extent.size;
        m_continues = (record.flags & kFileFlagContinued) != 0;
    }

    SIsoVolume& m_volume;
    SDiscTree& m_tree;
    CLimitedLines& m_problems;
    CDirectoryReader m_reader;
    std::set<std::uint32_t> m_entered;
    bool m_continues = false;  ///< Whether the last record said that its file has another one.
    bool m_isFirst = false;    ///< Whether the next record is the first of its directory.
};

void CheckByteOrders(const SIsoVolume& volume, CLimitedLines& problems) {
    const SPrimaryVolumeDescriptor& fields = volume.descriptor;
    const auto check = [&](const auto& number, const char* what) {
        if (!SameOrders(number)) {
            problems.Add(Format("the volume descriptor in sector %u: the %s differs in its two byte orders",
                                volume.sector, what));
        }
    };
    check(fields.volumeSpaceSize, "volume size");
    check(fields.volumeSetSize, "volume set size");
    check(fields.volumeSequenceNumber, "volume sequence number");
    check(fields.logicalBlockSize, "block size");
    check(fields.pathTableSize, "path table size");
    check(fields.rootRecord.extentLocation, "sector of the root directory");
    check(fields.rootRecord.dataLength, "length of the root directory");
}

}  // namespace

std::vector<SIsoVolume> ReadIsoVolumes(CByteSource& image, CLimitedLines& problems) {
    std::vector<SIsoVolume> volumes;
    std::set<std::uint32_t> roots;
    for (const SVolumeDescriptorAt& found : ReadVolumeDescriptors(image)) {
        const bool isPrimary = volumes.empty();
        if (!isPrimary && found.descriptor.type != kSupplementaryVolume) {
            continue;
        }
        SIsoVolume volume = {found.sector, found.descriptor, false, {}};
        volume.isJoliet = !isPrimary && IsJoliet(volume.descriptor);
        volume.tree.prefix = isPrimary ? "" : volume.isJoliet ? "Joliet: " : "supplementary volume: ";
        CheckByteOrders(volume, problems);
        if (roots.insert(volume.descriptor.rootRecord.extentLocation.Value()).second) {
            CTreeReader(image, volume, problems).Read();
        }
        volumes.push_back(std::move(volume));
    }
    return volumes;
}

SDiscTree TreeOf(const SUdfVolume& volume) {
    SDiscTree tree = {"UDF: ", {}, {}};
    for (const SUdfFile& file : volume.files) {
        if (!file.isFolder && !file.embedded) {
            tree.files.push_back(
                {file.path, file.extents, file.extents.empty() ? 0 : file.extents[0].sector, file.size});
        }
    }
    return tree;
}

std::string NameOfFolder(const SDiscTree& tree, const std::string& path) {
    return tree.prefix + (path.empty() ? "the root directory" : "the folder " + path);
}

}  // namespace vantrel
