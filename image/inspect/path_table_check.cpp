#include "image/inspect/path_table_check.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <span>
#include <unordered_map>

#include "operation/text.h"

namespace vantrel {

namespace {

/// Longer tables cannot be: there are 65,535 directories, and a record has at most 8 + 222 bytes.
constexpr std::uint32_t kLongestTable = 16U << 20U;

enum class EOrder { Little, Big };

struct STableRecord {
    std::uint32_t sector = 0;
    std::uint32_t parent = 0;  ///< number, from 1
    std::string_view name;
};

bool operator==(const STableRecord& a, const STableRecord& b) {
    return a.sector == b.sector && a.parent == b.parent && a.name == b.name;
}

/// A path table, whose records are read one after the other.
class CTable {
public:
    CTable(CByteSource& image, const SExtent& place, EOrder order)
        : m_bytes(static_cast<std::size_t>(place.size)), m_order(order) {
        m_bytes.resize(image.ReadAt(place.Position(), m_bytes));
    }

    /// The next record; nullopt at the end, or if what follows is no record.
    std::optional<STableRecord> Next() {
        const auto left = std::span(m_bytes).subspan(m_position);
        if (left.size() < sizeof(SPathTableRecord) || left[0] == 0) {
            return std::nullopt;
        }
        std::array<std::uint8_t, sizeof(SPathTableRecord)> head = {};
        std::copy_n(left.begin(), head.size(), head.begin());
        const auto record = std::bit_cast<SPathTableRecord>(head);
        const std::size_t length = head.size() + record.nameLength;
        if (length > left.size()) {
            return std::nullopt;
        }
        m_position += std::min(length + record.nameLength % 2U, left.size());
        const auto name = left.subspan(head.size(), record.nameLength);
        const std::uint32_t first = record.parentNumber[0];
        const std::uint32_t second = record.parentNumber[1];
        const bool isLittle = m_order == EOrder::Little;
        return STableRecord{isLittle ? LoadLe32(record.extentLocation) : LoadBe32(record.extentLocation),
                            isLittle ? second << 8U | first : first << 8U | second,
                            {reinterpret_cast<const char*>(name.data()), name.size()}};
    }

    bool IsAtEnd() const { return m_position == m_bytes.size(); }

private:
    std::vector<std::uint8_t> m_bytes;
    EOrder m_order;
    std::size_t m_position = 0;
};

struct SPlacedTable {
    const char* name;
    EOrder order;
    SExtent place;
};

/// The tables of a volume, the type L one first. Only that one must exist.
std::vector<SPlacedTable> TablesOf(const SPrimaryVolumeDescriptor& descriptor) {
    const std::int64_t size = std::min(descriptor.pathTableSize.Value(), kLongestTable);
    std::vector<SPlacedTable> tables = {{"path table", EOrder::Little, {LoadLe32(descriptor.pathTableLocation), size}}};
    const auto addIfPresent = [&](const char* name, EOrder order, std::uint32_t sector) {
        if (sector != 0) {
            tables.push_back({name, order, {sector, size}});
        }
    };
    addIfPresent("type M path table", EOrder::Big, LoadBe32(descriptor.pathTableLocationM));
    addIfPresent("optional path table", EOrder::Little, LoadLe32(descriptor.optionalPathTableLocation));
    addIfPresent("optional type M path table", EOrder::Big, LoadBe32(descriptor.optionalPathTableLocationM));
    return tables;
}

/// Compares a table with the directories. They have the same folders, each with the sector of its parent.
void CheckAgainstTree(CTable table, const SDiscTree& tree, CLimitedLines& problems) {
    std::unordered_map<std::uint32_t, const SDiscFolder*> missing;
    for (const SDiscFolder& folder : tree.folders) {
        missing.emplace(folder.sector, &folder);
    }
    const auto known = missing;
    std::vector<std::uint32_t> sectors;
    while (const std::optional<STableRecord> record = table.Next()) {
        sectors.push_back(record->sector);
        const auto found = known.find(record->sector);
        if (found == known.end()) {
            problems.Add(Format("%sthe path table has a folder at sector %u, the directories have none there",
                                tree.prefix.c_str(), record->sector));
            continue;
        }
        missing.erase(record->sector);
        const std::string& path = found->second->path;
        const std::size_t slash = path.rfind('/');
        const auto parent = record->parent == 0 || record->parent > sectors.size()
                                ? known.end()
                                : known.find(sectors[record->parent - 1]);
        const std::string parentPath = slash == std::string::npos ? std::string() : path.substr(0, slash);
        if (parent == known.end() || parent->second->path != parentPath) {
            problems.Add(
                Format("%sthe path table has another parent for the folder %s", tree.prefix.c_str(), path.c_str()));
        }
    }
    if (!table.IsAtEnd()) {
        problems.Add(Format("%sthe path table ends before its length", tree.prefix.c_str()));
    }
    for (const SDiscFolder& folder : tree.folders) {
        if (missing.count(folder.sector) != 0) {
            problems.Add(
                Format("%sthe path table lacks %s", tree.prefix.c_str(), NameOfFolder({}, folder.path).c_str()));
        }
    }
}

/// Whether two tables have the same records.
bool SameRecords(CTable one, CTable other) {
    while (true) {
        const std::optional<STableRecord> record = one.Next();
        const std::optional<STableRecord> otherRecord = other.Next();
        if (record.has_value() != otherRecord.has_value() || (record && !(*record == *otherRecord))) {
            return false;
        }
        if (!record) {
            return true;
        }
    }
}

}  // namespace

std::vector<SExtent> PathTablePlaces(const SPrimaryVolumeDescriptor& descriptor) {
    std::vector<SExtent> places;
    for (const SPlacedTable& table : TablesOf(descriptor)) {
        places.push_back(table.place);
    }
    return places;
}

void CheckPathTables(CByteSource& image, const SIsoVolume& volume, CLimitedLines& problems) {
    const std::vector<SPlacedTable> tables = TablesOf(volume.descriptor);
    CheckAgainstTree(CTable(image, tables[0].place, tables[0].order), volume.tree, problems);
    for (std::size_t i = 1; i < tables.size(); ++i) {
        if (!SameRecords(CTable(image, tables[0].place, tables[0].order),
                         CTable(image, tables[i].place, tables[i].order))) {
            problems.Add(Format("%sthe %s in sector %u differs from the one in sector %u", volume.tree.prefix.c_str(),
                                tables[i].name, tables[i].place.sector, tables[0].place.sector));
        }
    }
}

}  // namespace vantrel
