#include "iso/edit/disc_map.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <numeric>
#include <set>
#include <string_view>

#include "files/letter_case.h"
#include "files/refused.h"
#include "iso/edit/tree_records.h"
#include "iso/postgap.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::uint32_t kSystemAreaSectors = 16;
/// What closes an image is kept in memory when it moves.
constexpr std::uint32_t kMostClosingSectors = 4096;

/// A volume descriptor with its place.
struct SVolume {
    SPrimaryVolumeDescriptor descriptor;
    std::int64_t position;
};

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

bool IsSame(const std::vector<SExtent>& first, const std::vector<SExtent>& second) {
    return std::equal(first.begin(), first.end(), second.begin(), second.end(),
                      [](const SExtent& a, const SExtent& b) { return a.sector == b.sector && a.size == b.size; });
}

/// Extents that follow each other as one.
std::vector<SExtent> JoinedExtents(const std::vector<SExtent>& extents) {
    std::vector<SExtent> joined;
    for (const SExtent& extent : extents) {
        if (!joined.empty() && joined.back().End() == extent.Position()) {
            joined.back().size += extent.size;
        } else {
            joined.push_back(extent);
        }
    }
    return joined;
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
        AddUdf();
        std::stable_sort(m_map.places.begin(), m_map.places.end(),
                         [](const SDiscPlace& a, const SDiscPlace& b) { return a.Sector() < b.Sector(); });
        CheckOverlaps();
        AddBootImages();
        m_map.kind = KindBySystem(m_volumes.front().descriptor);
        FindClosingSector();
        return std::move(m_map);
    }

private:
    void ReadVolumes() {
        for (const SVolumeDescriptorAt& volume : ReadVolumeDescriptors(m_image)) {
            AddStructure(volume.sector, 1);
            if (m_volumes.empty() || volume.descriptor.type == kSupplementaryVolume) {
                CheckBlockSize(volume.descriptor);
                const std::int64_t position = volume.sector * kSectorSize;
                m_volumes.push_back({volume.descriptor, position});
                m_map.volumeSizes.push_back(
                    {position + static_cast<std::int64_t>(offsetof(SPrimaryVolumeDescriptor, volumeSpaceSize)),
                     volume.descriptor.volumeSpaceSize.Value()});
            }
        }
    }

    static void CheckBlockSize(const SPrimaryVolumeDescriptor& volume) {
        const unsigned size = LoadLe16(volume.logicalBlockSize.little);
        if (size != kSectorSize && size != 0) {
            throw CRefused(
                Format("the volume has logical blocks of %u bytes; only those of 2048 bytes are supported", size));
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
            m_map.warnings.push_back(
                Format("The directories of the %s volume cannot be read (%s): readers that prefer "
                       "them will not find the files",
                       IsJoliet(volume) ? "Joliet" : "supplementary", refused.what()));
        }
    }

    void AddPathTables(const SPrimaryVolumeDescriptor& volume) {
        const std::int64_t sectors = SectorsFor(volume.pathTableSize.Value());
        for (const std::uint32_t sector :
             {LoadLe32(volume.pathTableLocation), LoadLe32(volume.optionalPathTableLocation),
              LoadBe32(volume.pathTableLocationM), LoadBe32(volume.optionalPathTableLocationM)}) {
            if (sector == 0) {
                continue;
            }
            if (sector + sectors > m_map.Sectors()) {
                throw CRefused(Format("the path table at sector %u lies outside of the image", sector));
            }
            AddStructure(sector, sectors);
        }
    }

    void AddStructure(std::int64_t sector, std::int64_t sectors) {
        const std::int64_t end = std::min<std::int64_t>(sector + sectors, m_map.Sectors());
        if (sector < end) {
            m_structures.push_back({sector, end, nullptr});
        }
    }

    void AddTree(std::size_t volume, STreeRecords tree) {
        m_map.places.reserve(volume == 0 ? tree.files.size() : m_map.places.size());
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
        SDiscName name = {std::move(file.path), volume, file.record};
        if (file.Size() == 0) {
            m_emptyBySector.emplace(file.Sector(), m_map.places.size());
            AddPlace(std::move(file), std::move(name));
            return;
        }
        const auto [found, isNew] = m_placeBySector.try_emplace(file.Sector(), m_map.places.size());
        if (isNew) {
            AddPlace(std::move(file), std::move(name));
            return;
        }
        SDiscPlace& place = m_map.places[found->second];
        if (!IsSame(place.extents, file.extents)) {
            throw CRefused(Format("%s: it starts at sector %u like %s, but is not the same file", name.path.c_str(),
                                  file.Sector(), place.Path().c_str()));
        }
        place.names.push_back(std::move(name));
        place.obstacle = *place.obstacle == '\0' ? file.obstacle : place.obstacle;
    }

    void AddPlace(STreeFile file, SDiscName name) {
        SDiscPlace& place = m_map.places.emplace_back();
        place.extents = std::move(file.extents);
        place.names.push_back(std::move(name));
        place.obstacle = file.obstacle;
    }

    /// Empty files share sectors with each other and with other files, so their names tell which records belong
    /// together.
    void LinkEmptyFiles(std::size_t volume, std::vector<STreeFile> empty) {
        std::map<std::uint32_t, std::vector<STreeFile*>> bySector;
        for (STreeFile& file : empty) {
            bySector[file.Sector()].push_back(&file);
        }
        for (auto& [sector, files] : bySector) {
            std::vector<std::size_t> places;
            const auto [begin, end] = m_emptyBySector.equal_range(sector);
            std::transform(begin, end, std::back_inserter(places), [](const auto& entry) { return entry.second; });
            LinkByName<STreeFile*>(
                files, places, [](const STreeFile* file) -> const std::string& { return file->path; },
                [&](STreeFile* file, std::size_t place) {
                    m_map.places[place].names.push_back({std::move(file->path), volume, file->record});
                });
        }
    }

    /// Calls `link` for each empty file and the empty place of the same name. If a file has no such place, the places
    /// that no file has cannot be changed.
    template <typename File>
    void LinkByName(const std::vector<File>& files, const std::vector<std::size_t>& places,
                    const std::function<const std::string&(File)>& pathOf,
                    const std::function<void(File, std::size_t)>& link) {
        const bool isOnlyPair = files.size() == 1 && places.size() == 1;
        std::multimap<std::string, std::size_t> byPath;
        for (const std::size_t place : places) {
            byPath.emplace(isOnlyPair ? "" : ComparablePath(m_map.places[place].Path()), place);
        }
        bool areAllLinked = true;
        for (const File file : files) {
            const auto found = byPath.find(isOnlyPair ? "" : ComparablePath(pathOf(file)));
            if (found == byPath.end()) {
                areAllLinked = false;
                continue;
            }
            link(file, found->second);
            byPath.erase(found);
        }
        for (const auto& [path, place] : byPath) {
            if (!areAllLinked) {
                m_map.places[place].obstacle =
                    "is empty, and its Joliet or UDF record cannot be identified among those of other empty files";
            }
        }
    }

    void AddUdf() {
        try {
            m_map.udf = ReadUdfVolume(m_image);
        } catch (const CRefused& refused) {
            if (m_rule == EMapRule::Complete) {
                throw;
            }
            m_map.warnings.push_back(
                Format("The UDF volume cannot be read (%s): readers that prefer it will not find "
                       "the files",
                       refused.what()));
        }
        if (!m_map.udf) {
            return;
        }
        for (const SExtent& extent : m_map.udf->structures) {
            AddStructure(extent.sector, SectorsFor(extent.size));
        }
        std::vector<std::size_t> empty;
        std::vector<std::size_t> others;
        for (std::size_t i = 0; i < m_map.udf->files.size(); ++i) {
            const SUdfFile& file = m_map.udf->files[i];
            if (file.isFolder) {
                continue;
            }
            if (file.size == 0) {
                empty.push_back(i);
            } else if (file.extents.empty() || !LinkUdfFile(i)) {
                others.push_back(i);
            }
        }
        LinkEmptyUdfFiles(empty);
        AddOtherUdfFiles(others);
    }

    /// Links a file to the place at its first sector; false if there is none.
    bool LinkUdfFile(std::size_t index) {
        const SUdfFile& file = m_map.udf->files[index];
        const auto found = m_placeBySector.find(file.extents.front().sector);
        if (found == m_placeBySector.end()) {
            return false;
        }
        SDiscPlace& place = m_map.places[found->second];
        if (!IsSame(JoinedExtents(place.extents), file.extents)) {
            RefuseUdfFile(file, place);
        }
        place.udfFiles.push_back(index);
        return true;
    }

    void LinkEmptyUdfFiles(const std::vector<std::size_t>& files) {
        std::vector<std::size_t> places;
        for (const auto& [sector, place] : m_emptyBySector) {
            places.push_back(place);
        }
        LinkByName<std::size_t>(
            files, places, [this](std::size_t i) -> const std::string& { return m_map.udf->files[i].path; },
            [this](std::size_t i, std::size_t place) { m_map.places[place].udfFiles.push_back(i); });
    }

    /// Files at places of their own, and those with the content in the file entry. A file of the same name must be
    /// alike.
    void AddOtherUdfFiles(const std::vector<std::size_t>& files) {
        std::multimap<std::string, std::size_t> byPath;
        for (std::size_t i = 0; i < m_map.places.size() && !files.empty(); ++i) {
            for (const SDiscName& name : m_map.places[i].names) {
                byPath.emplace(ComparablePath(name.path), i);
            }
        }
        for (const std::size_t index : files) {
            const SUdfFile& file = m_map.udf->files[index];
            const auto found = byPath.find(ComparablePath(file.path));
            if (found != byPath.end()) {
                SDiscPlace& place = m_map.places[found->second];
                if (!file.embedded || place.Size() != file.size) {
                    RefuseUdfFile(file, place);
                }
                place.udfFiles.push_back(index);
            }
            for (const SExtent& extent : file.extents) {
                AddStructure(extent.sector, SectorsFor(extent.size));
            }
        }
    }

    [[noreturn]] static void RefuseUdfFile(const SUdfFile& file, const SDiscPlace& place) {
        throw CRefused(Format("%s: ISO 9660 records %lld bytes at sector %u, UDF %lld bytes at sector %u",
                              file.path.c_str(), static_cast<long long>(place.Size()), place.Sector(),
                              static_cast<long long>(file.size),
                              file.extents.empty() ? file.entrySector : file.extents.front().sector));
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

    void AddBootImages() {
        const std::optional<SBootCatalogue> catalogue = ReadBootCatalogue(m_image);
        if (!catalogue) {
            return;
        }
        if (!catalogue->isValid) {
            if (m_rule == EMapRule::ReachableOnly) {
                m_map.warnings.push_back(
                    Format("The boot catalogue at sector %u cannot be read: no computer will boot from the image",
                           catalogue->sector));
            }
            return;
        }
        Occupy(catalogue->sector, 1);
        if (SDiscPlace* const place = PlaceAround(catalogue->sector)) {
            place->obstacle = "is the boot catalogue of the image";
        }
        for (const SBootEntry& entry : catalogue->entries) {
            SDiscPlace* const place = PlaceAround(entry.sector);
            if (place == nullptr) {
                Occupy(entry.sector, SectorsFor(entry.Size()));
            } else if (place->Sector() == entry.sector) {
                place->bootEntries.push_back(entry);
            } else {
                place->obstacle = "holds a boot image behind its first sector";
            }
        }
    }

    void Occupy(std::int64_t sector, std::int64_t sectors) {
        const std::int64_t end = std::min<std::int64_t>(sector + sectors, m_map.Sectors());
        m_map.occupied.Add(static_cast<std::uint32_t>(sector), static_cast<std::uint32_t>(end));
    }

    /// The place with content that has a sector; null if there is none.
    SDiscPlace* PlaceAround(std::uint32_t sector) {
        const auto found = std::find_if(m_map.places.begin(), m_map.places.end(), [sector](const SDiscPlace& place) {
            return std::any_of(place.extents.begin(), place.extents.end(), [sector](const SExtent& extent) {
                return extent.sector <= sector && sector < extent.sector + SectorsFor(extent.size);
            });
        });
        return found == m_map.places.end() ? nullptr : &*found;
    }

    void FindClosingSector() {
        m_map.closingSector = m_map.Sectors();
        const std::int64_t postgap = m_map.Sectors() - kPostgapSectors;
        if (m_map.udf && m_map.udf->closingAnchors > 0) {
            FindClosingAnchors(*m_map.udf);
        } else if (m_map.kind == ImageKind::Cd && m_map.length % kSectorSize == 0 && postgap > 0 &&
                   m_map.occupied.IsFree(static_cast<std::uint32_t>(postgap), m_map.Sectors()) && IsPostgap(postgap)) {
            m_map.closingSector = static_cast<std::uint32_t>(postgap);
        }
    }

    /// The closing anchors, and the sectors between the partition and them, end the content unless anything lies there
    /// or behind them.
    void FindClosingAnchors(const SUdfVolume& volume) {
        const auto anchor = static_cast<std::uint32_t>(volume.anchors.back() + 1 - volume.closingAnchors);
        const std::uint32_t partitionEnd = volume.partitionStart + volume.partitionSectors;
        const bool isPartition = partitionEnd < anchor && m_map.occupied.IsFree(partitionEnd, anchor);
        const std::uint32_t closing = isPartition ? partitionEnd : anchor;
        if (m_map.occupied.IsFree(volume.anchors.back() + 1, m_map.Sectors()) &&
            m_map.Sectors() - closing <= kMostClosingSectors) {
            m_map.closingSector = closing;
        }
    }

    /// The postgap of a CD: the last 150 sectors, which nothing occupies, zeros apart from the mark.
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
