#include "iso/path_table.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>

#include "iso/iso9660.h"

namespace vantrel {

namespace {

constexpr char kListSeparator = '\\';  // on every system
/// What ends a line or a text file on some system.
constexpr std::string_view kLineBreakers("\n\r\x1A\0", 4);

}  // namespace

std::string LineName(std::string name) {
    const auto breaksLine = [](char c) { return kLineBreakers.find(c) != std::string_view::npos; };
    std::replace_if(name.begin(), name.end(), breaksLine, '_');
    return name;
}

void CPathTable::Read(CByteSource& image, std::int64_t position, std::int64_t length,
                      const std::function<void()>& afterRecord) {
    m_directories.clear();
    const std::int64_t end = position + length;
    const auto read = [&](std::span<std::uint8_t> bytes) {
        const std::int64_t left = std::max<std::int64_t>(end - position, 0);
        const auto wanted = bytes.first(std::min(bytes.size(), static_cast<std::size_t>(left)));
        const std::size_t count = image.ReadAt(position, wanted);
        position += static_cast<std::int64_t>(count);
        return count == bytes.size();
    };
    std::array<std::uint8_t, sizeof(SPathTableRecord)> head = {};
    while (m_directories.size() < kMostDirectories && read(head)) {
        const auto record = std::bit_cast<SPathTableRecord>(head);
        if (record.nameLength == 0) {
            break;
        }
        std::array<std::uint8_t, 256> name = {};
        read(std::span(name).first(record.nameLength + record.nameLength % 2U));
        const std::size_t parent = LoadLe16(record.parentNumber);
        m_directories.push_back({LoadLe32(record.extentLocation), parent == 0 ? kMostDirectories : parent - 1,
                                 LineName({name.begin(), name.begin() + record.nameLength})});
        afterRecord();
    }
    RepairParents();
}

void CPathTable::ReadRootOnly(std::uint32_t extent) {
    m_directories = {{extent, 0, {}}};
}

/// Replaces parents that do not exist by the root, and breaks every cycle of parents there, so that every path ends at
/// the root.
void CPathTable::RepairParents() {
    constexpr std::size_t kNotSeen = 0;
    std::vector<std::size_t> seenFrom(m_directories.size(), kNotSeen);
    for (std::size_t start = 0; start < m_directories.size(); ++start) {
        std::size_t index = start;
        while (index != 0 && seenFrom[index] == kNotSeen) {
            seenFrom[index] = start + 1;
            std::size_t& parent = m_directories[index].parent;
            const bool closesCycle = parent < m_directories.size() && parent != 0 && seenFrom[parent] == start + 1;
            if (parent >= m_directories.size() || closesCycle) {
                parent = 0;
            }
            index = parent;
        }
    }
}

bool CPathTable::PathOf(std::size_t index, std::size_t limit, std::string& path) const {
    std::vector<const std::string*> names;
    std::size_t length = 0;
    for (; index != 0; index = m_directories[index].parent) {
        names.push_back(&m_directories[index].name);
        length += 1 + names.back()->size();
        if (length > limit) {
            return false;
        }
    }
    path.clear();
    std::for_each(names.rbegin(), names.rend(), [&path](const std::string* name) { path += kListSeparator + *name; });
    return true;
}

}  // namespace vantrel
