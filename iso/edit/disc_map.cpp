#include "iso/edit/disc_map.h"

#include <algorithm>
#include <array>
#include <map>
#include <numeric>
#include <set>
#include <span>
#include <string_view>

#include "files/letter_case.h"
#include "files/refused.h"
#include "iso/edit/tree_records.h"
#include "iso/postgap.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::size_t kMostDescriptors = 64;
constexpr std::uint8_t kSupplementaryVolume = 2;  ///< also an enhanced one (ECMA-119 8.5)
constexpr std::uint8_t kSetTerminator = 255;
constexpr std::uint32_t kSystemAreaSectors = 16;

/// A volume descriptor with its place.
struct SVolume {
    SPrimaryVolumeDescriptor descriptor;
    std::int64_t position;
};

/// Whether a supplementary volume has Joliet names: its escape sequence is "%/@", "%/C" or "%/E".
bool IsJoliet(const SPrimaryVolumeDescriptor& volume) {
    const auto& escape = volume.unused88;
    return escape[0] == '%' && escape[1] == '/' && (escape[2] == '@' || escape[2] == 'C' || escape[2] == 'E');
}

/// A path for the comparison of names in two trees: in upper case, with '_' for characters that ISO 9660 names cannot
/// have, and without the dot at the end of names that have no extension.
std::string ComparablePath(const std::string& path) {
    std::string comparable;
    for (const char c : path) {
        if (c == '/' && comparable.ends_with('.')) {
            comparable.pop_back();
        }
        const char upper = UpperAscii(c);
        const bool isPlain = (upper >= 'A' && upper <= 'Z') || (upper >= '0' && upper <= '9') || c == '.' || c == '/';
        comparable += isPlain ? upper : '_';
    }
    if (comparable.ends_with('.')) {
        comparable.pop_back();
    }
    return comparable;
}

/// Sectors of a file or a structure.
struct SArea {
    std::int64_t first;
    std::int64_t end;
    const SDiscPlace* place;  ///< null for a structure
};

class CMapReader {
public:
    CMapReader(CByteSource& image, EMapRule rule) : m_image(image), m_rule(rule) { m_map.length = image.Size(); }

    SDiscMap Read() {
        ReadVolumes();
        AddStructure(0, kSystemAreaSectors);
        for (std::size_t i = 0; i < m_volumes.size(); ++i) {
            AddVolume(i);
        }
        std::stable_sort(m_map.places.begin(), m_map.places.end(),
                         [](const SDiscPlace& a, const SDiscPlace& b) { return a.Sector() < b.Sector(); });
        CheckOverlaps();
        m_map.kind = KindBySystem(m_volumes.front().descriptor);
        FindClosingSector();
        return std::move(m_map);
    }

private:
    void ReadVolumes() {
        for (std::size_t i = 0; i < kMostDescriptors; ++i) {
            const std::int64_t position = kPrimaryVolumePosition + static_cast<std::int64_t>(i) * kSectorSize;
            const SPrimaryVolumeDescriptor volume = ReadVolume(m_image, position);
            const bool isFirst = i == 0;
            if (!isFirst && volume.standardIdentifier != m_volumes.front().descriptor.standardIdentifier) {
                break;
            }
            AddStructure(position / kSectorSize, 1);
            if (!isFirst && volume.type == kSetTerminator) {
                break;
            }
            if (isFirst || volume.type == kSupplementaryVolume) {
                CheckBlockSize(volume);
                m_volumes.push_back({volume, position});
                m_map.volumeSizes.push_back(
                    {position + static_cast<std::int64_t>(offsetof(SPrimaryVolumeDescriptor, volumeSpaceSize)),
                     volume.volumeSpaceSize.Value()});
            }
        }
    }

    static void CheckBlockSize(const SPrimaryVolumeDescriptor& volume) {
        const unsigned size = LoadLe16(volume.logicalBlockSize.little);
        if (size != kSectorSize && size != 0) {
            throw CRefused(Format("the volume has logical blocks of %u bytes; only those of 2048 bytes are supported",
                                  size));
        }
    }

    void AddVolume(std::size_t index) {
        const SPrimaryVolumeDescriptor& volume = m_volumes[index].descriptor;
        AddPathTables(volume);
        // An enhanced volume may name the directories of the primary one.
        if (!m_roots.insert(volume.rootRecord.extentLocation.Value()).second) {
            return;
        }
        try {
            AddTree(index, ReadTreeRecords(m_image, volume.rootRecord,
                                           IsJoliet(volume) ? ENameCoding::Ucs2 : ENameCoding::Bytes));
        } catch (const CRefused& refused) {
            if (index == 0 || m_rule == EMapRule::Complete) {
                throw;
            }
            m_map.warnings.push_back(Format("The directories of the %s volume cannot be read (%s): readers that prefer "
                                            "them will not find the files",
                                            IsJoliet(volume) ? "Joliet" : "supplementary", refused.what()));
        }
    }

    void AddPathTables(const SPrimaryVolumeDescriptor& volume) {
        const std::int64_t sectors = SectorsFor(volume.pathTableSize.Value());
        for (const std::uint32_t sector :
             {LoadLe32(volume.pathTableLocation), LoadLe32(volume.optionalPathTableLocation),
              LoadBe32(volume.pathTableLocationM), LoadBe32(volume.optionalPathTableLocationM)}) {
            if (sector != 0) {
                AddStructure(sector, sectors);
            }
        }
    }

    void AddStructure(std::int64_t sector, std::int64_t sectors) {
        const std::int64_t end = std::min<std::int64_t>(sector + sectors, m_map.Sectors());
        if (sector < end) {
            m_structures.push_back({sector, end, nullptr});
        }
    }

    void AddTree(std::size_t volume, STreeRecords tree) {
        for (const STreeFolder& folder : tree.folders) {
            AddStructure(folder.extent.sector, SectorsFor(folder.extent.size));
        }
        std::vector<STreeFile> empty;
        for (STreeFile& file : tree.files) {
            if (file.Size() == 0 && volume > 0) {
                empty.push_back(std::move(file));
            } else {
                AddFile(volume, std::move(file));
            }
        }
        LinkEmptyFiles(volume, std::move(empty));
    }

    void AddFile(std::size_t volume, STreeFile file) {
        SDiscName name = {std::move(file.path), volume, std::move(file.records)};
        if (file.Size() == 0) {
            m_emptyBySector.emplace(file.Sector(), m_map.places.size());
            m_map.places.push_back({std::move(file.extents), {std::move(name)}, std::move(file.obstacle)});
            return;
        }
        const auto [found, isNew] =
            m_placeBySector.try_emplace(file.Sector(), m_map.places.size());
        if (isNew) {
            m_map.places.push_back({std::move(file.extents), {std::move(name)}, std::move(file.obstacle)});
            return;
        }
        SDiscPlace& place = m_map.places[found->second];
        if (!std::equal(place.extents.begin(), place.extents.end(), file.extents.begin(), file.extents.end(),
                        [](const SExtent& a, const SExtent& b) { return a.sector == b.sector && a.size == b.size; })) {
            throw CRefused(Format("%s: it starts at sector %u like %s, but is not the same file", name.path.c_str(),
                                  file.Sector(), place.Path().c_str()));
        }
        place.names.push_back(std::move(name));
        place.obstacle = place.obstacle.empty() ? std::move(file.obstacle) : std::move(place.obstacle);
    }

    /// Empty files share sectors with each other and with other files, so their names tell which records belong
    /// together.
    void LinkEmptyFiles(std::size_t volume, std::vector<STreeFile> empty) {
        std::map<std::uint32_t, std::vector<STreeFile*>> bySector;
        for (STreeFile& file : empty) {
            bySector[file.Sector()].push_back(&file);
        }
        for (auto& [sector, files] : bySector) {
            LinkEmptyFiles(volume, sector, files);
        }
    }

    void LinkEmptyFiles(std::size_t volume, std::uint32_t sector, const std::vector<STreeFile*>& files) {
        const auto [begin, end] = m_emptyBySector.equal_range(sector);
        const bool isOnlyPair = files.size() == 1 && std::distance(begin, end) == 1;
        std::map<std::string, std::vector<std::size_t>> byPath;
        for (auto i = begin; i != end; ++i) {
            byPath[isOnlyPair ? "" : ComparablePath(m_map.places[i->second].Path())].push_back(i->second);
        }
        bool areAllLinked = true;
        for (STreeFile* const file : files) {
            const auto found = byPath.find(isOnlyPair ? "" : ComparablePath(file->path));
            if (found == byPath.end() || found->second.size() != 1) {
                areAllLinked = false;
                continue;
            }
            m_map.places[found->second.front()].names.push_back({file->path, volume, file->records});
            byPath.erase(found);
        }
        if (areAllLinked) {
            return;
        }
        for (const auto& [path, places] : byPath) {
            for (const std::size_t place : places) {
                m_map.places[place].obstacle =
                    "is empty, and its record in another volume cannot be told from those of other empty files";
            }
        }
    }

    void CheckOverlaps() {
        std::vector<SArea> areas = m_structures;
        for (const SDiscPlace& place : m_map.places) {
            for (const SExtent& extent : place.extents) {
                if (extent.size > 0) {
                    areas.push_back({extent.sector, extent.sector + SectorsFor(extent.size), &place});
                }
            }
        }
        std::sort(areas.begin(), areas.end(), [](const SArea& a, const SArea& b) { return a.first < b.first; });
        SArea file = {0, 0, nullptr};       // the one that reaches farthest so far
        SArea structure = {0, 0, nullptr};  // the same
        for (const SArea& area : areas) {
            if (area.first < file.end) {
                RefuseOverlap(file, area);
            }
            if (area.place != nullptr && area.first < structure.end) {
                RefuseOverlap(area, structure);
            }
            SArea& farthest = area.place != nullptr ? file : structure;
            farthest = area.end > farthest.end ? area : farthest;
            m_map.occupied.Add(static_cast<std::uint32_t>(area.first), static_cast<std::uint32_t>(area.end));
        }
    }

    [[noreturn]] static void RefuseOverlap(const SArea& file, const SArea& other) {
        const std::string otherName = other.place != nullptr ? other.place->Path() : "structures of the volume";
        throw CRefused(Format("%s: its sectors %lld to %lld overlap %s", file.place->Path().c_str(),
                              static_cast<long long>(file.first), static_cast<long long>(file.end) - 1,
                              otherName.c_str()));
    }

    /// The postgap of a CD: the last 150 sectors, which nothing occupies, zeros apart from the mark.
    void FindClosingSector() {
        const std::uint32_t sectors = m_map.Sectors();
        m_map.closingSector = sectors;
        const std::int64_t first = sectors - kPostgapSectors;
        if (m_map.kind == ImageKind::Cd && m_map.length % kSectorSize == 0 && first > 0 &&
            m_map.occupied.IsFree(static_cast<std::uint32_t>(first), sectors) && IsPostgap(first)) {
            m_map.closingSector = static_cast<std::uint32_t>(first);
        }
    }

    bool IsPostgap(std::int64_t first) {
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(kPostgapSectors * kSectorSize));
        m_image.ReadAt(first * kSectorSize, bytes);
        if (std::equal(kPostgapMark.begin(), kPostgapMark.end(), bytes.begin())) {
            std::fill_n(bytes.begin(), kPostgapMark.size(), std::uint8_t{0});
        }
        return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
    }

    CByteSource& m_image;
    const EMapRule m_rule;
    SDiscMap m_map;
    std::vector<SVolume> m_volumes;
    std::vector<SArea> m_structures;
    std::set<std::uint32_t> m_roots;
    std::map<std::uint32_t, std::size_t> m_placeBySector;  ///< places with content
    std::multimap<std::uint32_t, std::size_t> m_emptyBySector;
};

}  // namespace

std::int64_t SDiscPlace::Size() const {
    return std::accumulate(extents.begin(), extents.end(), std::int64_t{0},
                           [](std::int64_t sum, const SExtent& extent) { return sum + extent.size; });
}

std::optional<std::size_t> SDiscMap::FindPlace(std::uint32_t sector, std::int64_t size, const std::string& path) const {
    auto place = std::lower_bound(places.begin(), places.end(), sector,
                                  [](const SDiscPlace& a, std::uint32_t value) { return a.Sector() < value; });
    for (; place != places.end() && place->Sector() == sector; ++place) {
        if (place->Size() == size && (size > 0 || place->Path() == path)) {
            return static_cast<std::size_t>(place - places.begin());
        }
    }
    return std::nullopt;
}

SDiscMap ReadDiscMap(CByteSource& image, EMapRule rule) {
    return CMapReader(image, rule).Read();
}

}  // namespace vantrel
