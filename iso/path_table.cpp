#include "iso/path_table.h"

#include <algorithm>
#include <array>
#include <bit>

#include "iso/iso9660.h"

namespace vantrel {

namespace {

constexpr char kListSeparator = '\\';  // whatever the system's own is
constexpr unsigned char kFirstPrintable = 0x20;

}  // namespace

std::string PrintableName(std::string name) {
    std::replace_if(
        name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < kFirstPrintable; }, '_');
    return name;
}

void CPathTable::Read(CInputFile& file, const std::function<void()>& afterRecord) {
    m_directories.clear();
    file.Seek(0);
    std::array<std::uint8_t, sizeof(SPathTableRecord)> head = {};
    while (m_directories.size() < kMostDirectories && file.Read(head) == head.size()) {
        const auto record = std::bit_cast<SPathTableRecord>(head);
        if (record.nameLength == 0) {
            break;
        }
        std::array<std::uint8_t, 256> name = {};
        file.Read(std::span(name).first(record.nameLength + record.nameLength % 2U));
        const std::size_t parent = LoadLe16(record.parentNumber);
        m_directories.push_back({LoadLe32(record.extentLocation), parent == 0 ? kMostDirectories : parent - 1,
                                 PrintableName({name.begin(), name.begin() + record.nameLength})});
        afterRecord();
    }
    HangLooseDirectoriesBelowRoot();
}

void CPathTable::ReadRootOnly(std::uint32_t extent) {
    m_directories = {{extent, 0, {}}};
}

/// A parent that does not exist, and one of every circle of parents, is replaced by the root, so that every way ends
/// there.
void CPathTable::HangLooseDirectoriesBelowRoot() {
    constexpr std::size_t kNotSeen = 0;
    std::vector<std::size_t> seenOnWay(m_directories.size(), kNotSeen);
    for (std::size_t start = 0; start < m_directories.size(); ++start) {
        std::size_t index = start;
        while (index != 0 && seenOnWay[index] == kNotSeen) {
            seenOnWay[index] = start + 1;
            std::size_t& parent = m_directories[index].parent;
            const bool closesCircle = parent < m_directories.size() && parent != 0 && seenOnWay[parent] == start + 1;
            if (parent >= m_directories.size() || closesCircle) {
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
