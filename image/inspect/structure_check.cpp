#include "image/inspect/structure_check.h"

#include <algorithm>
#include <optional>

#include "files/refused.h"
#include "image/inspect/disc_tree.h"
#include "image/inspect/limited_lines.h"
#include "image/inspect/overlap_check.h"
#include "image/inspect/path_table_check.h"
#include "image/inspect/tree_comparison.h"
#include "iso/boot_catalogue.h"
#include "iso/postgap.h"
#include "iso/udf/unsupported.h"
#include "iso/volume.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// Bytes of zeros behind the volume that count as its padding.
constexpr std::int64_t kLongestPadding = 1 << 20;
/// Sectors around the end of a volume in which a second one may begin.
constexpr std::int64_t kNextVolumeRange = 32;

class CStructureCheck {
public:
    explicit CStructureCheck(CByteSource& image) : m_image(image), m_sectors(image.Size() / kSectorSize) {}

    std::vector<std::string> Run() {
        CLimitedLines records("of directories");
        m_volumes = ReadIsoVolumes(m_image, records);
        CheckLengths();
        Append(records);
        ReadUdf();
        CheckPlaces();
        CheckBootCatalogue();
        CLimitedLines tables("of path tables");
        for (const SIsoVolume& volume : m_volumes) {
            if (!volume.tree.folders.empty()) {
                CheckPathTables(m_image, volume, tables);
            }
        }
        Append(tables);
        return std::move(m_problems);
    }

private:
    void Append(const CLimitedLines& lines) {
        const std::vector<std::string> more = lines.Lines();
        m_problems.insert(m_problems.end(), more.begin(), more.end());
    }

    void CheckLengths() {
        const std::int64_t left = m_image.Size() % kSectorSize;
        const SPrimaryVolumeDescriptor& primary = m_volumes.front().descriptor;
        const std::uint32_t volumeSectors = primary.volumeSpaceSize.Value();
        if (left != 0) {
            m_problems.push_back(Format("the image is not a whole number of sectors: %lld bytes are left over",
                                        static_cast<long long>(left)));
        }
        if (m_sectors != volumeSectors && !EndsInPadding(volumeSectors) && !HasSecondVolume(volumeSectors)) {
            m_problems.push_back(Format("the image has %lld sectors, its volume descriptor says %u",
                                        static_cast<long long>(m_sectors), volumeSectors));
        }
        for (const SIsoVolume& volume : m_volumes) {
            if (volume.descriptor.volumeSpaceSize.Value() != volumeSectors) {
                m_problems.push_back(Format("the volume descriptor in sector %u says %u sectors, the primary one %u",
                                            volume.sector, volume.descriptor.volumeSpaceSize.Value(), volumeSectors));
            }
        }
    }

    /// Some programs do not count the postgap of a CD or the zeros that pad an image.
    bool EndsInPadding(std::uint32_t volumeSectors) {
        const std::int64_t start = volumeSectors * kSectorSize;
        const std::int64_t length = m_image.Size() - start;
        if (length <= 0 || length > kLongestPadding) {
            return false;
        }
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(length));
        m_image.ReadAt(start, bytes);
        const bool hasMark = length == kPostgapSectors * kSectorSize &&
                             std::equal(kPostgapMark.begin(), kPostgapMark.end(), bytes.begin());
        return std::all_of(bytes.begin() + (hasMark ? std::ssize(kPostgapMark) : 0), bytes.end(),
                           [](std::uint8_t byte) { return byte == 0; });
    }

    /// The second layer of a DVD is a volume of its own, which the first one does not count.
    bool HasSecondVolume(std::uint32_t volumeSectors) {
        const std::int64_t first = std::max<std::int64_t>(volumeSectors - kNextVolumeRange, kFirstDescriptor + 1);
        for (std::int64_t sector = first; sector < volumeSectors + kNextVolumeRange && sector < m_sectors; ++sector) {
            const SPrimaryVolumeDescriptor found = ReadVolume(m_image, sector * kSectorSize);
            const std::string name(found.standardIdentifier.begin(), found.standardIdentifier.end());
            if (found.type == 1 && name == "CD001") {
                return true;
            }
        }
        return false;
    }

    void ReadUdf() {
        try {
            m_udf = ReadUdfVolume(m_image);
        } catch (const CUnsupportedUdf&) {
            // It may be sound.
        } catch (const CRefused& refused) {
            m_problems.emplace_back(refused.what());
        }
        if (m_udf) {
            m_problems.insert(m_problems.end(), m_udf->findings.begin(), m_udf->findings.end());
        }
    }

    void CheckPlaces() {
        CLimitedLines outside("outside the image");
        CLimitedLines overlaps("that overlap");
        CLimitedLines differences("that differ");
        const std::vector<SNamedArea> areas = Areas();
        const auto check = [&](const SDiscTree& tree, const std::vector<SNamedArea>& known) {
            CheckInside(tree, outside);
            CheckOverlaps(tree, known, overlaps);
        };
        const SDiscTree& primary = m_volumes.front().tree;
        check(primary, areas);
        for (std::size_t i = 1; i < m_volumes.size(); ++i) {
            check(m_volumes[i].tree, {});
            CompareTrees(primary, m_volumes[i].tree, differences);
        }
        if (m_udf) {
            const SDiscTree udf = TreeOf(*m_udf);
            check(udf, {});
            CompareTrees(primary, udf, differences);
        }
        Append(outside);
        Append(overlaps);
        Append(differences);
    }

    void CheckInside(const SDiscTree& tree, CLimitedLines& problems) const {
        for (const SDiscFile& file : tree.files) {
            const bool isInside =
                file.size == 0 ? file.sector <= SectorsFor(m_image.Size())
                               : std::all_of(file.extents.begin(), file.extents.end(),
                                             [this](const SExtent& extent) { return extent.End() <= m_image.Size(); });
            if (!isInside) {
                problems.Add(Format("%s%s (sector %u, %lld bytes) lies outside the image", tree.prefix.c_str(),
                                    file.path.c_str(), file.sector, static_cast<long long>(file.size)));
            }
        }
    }

    void CheckBootCatalogue() {
        const std::optional<SBootCatalogue> catalogue = ReadBootCatalogue(m_image);
        if (!catalogue) {
            return;
        }
        if (!catalogue->isValid) {
            m_problems.push_back(Format("the boot record in sector %u names sector %u, which has no boot catalogue",
                                        catalogue->record, catalogue->sector));
        }
        CLimitedLines outside("of the boot catalogue");
        for (const SBootEntry& entry : catalogue->entries) {
            if (SExtent{entry.sector, entry.Size()}.End() > m_image.Size()) {
                outside.Add(Format("the boot catalogue: a boot image (sector %u, %lld bytes) lies outside the image",
                                   entry.sector, static_cast<long long>(entry.Size())));
            }
        }
        Append(outside);
    }

    /// What structures occupy, except the files.
    std::vector<SNamedArea> Areas() const {
        std::vector<SNamedArea> areas;
        std::uint32_t end = m_volumes.back().sector + 2;  // with the terminator
        for (const SIsoVolume& volume : m_volumes) {
            for (const SExtent& place : PathTablePlaces(volume.descriptor)) {
                areas.push_back({place, volume.tree.prefix + "a path table"});
            }
            for (const SDiscFolder& folder : volume.tree.folders) {
                areas.push_back(
                    {{folder.sector, folder.sectors * kSectorSize}, NameOfFolder(volume.tree, folder.path)});
            }
        }
        for (const SExtent& area : m_udf ? m_udf->structures : std::vector<SExtent>()) {
            if (area.sector == kFirstDescriptor) {
                end = std::max(end, static_cast<std::uint32_t>(area.End() / kSectorSize));
            } else {
                areas.push_back({area, "UDF structures"});
            }
        }
        areas.push_back({{kFirstDescriptor, (end - kFirstDescriptor) * kSectorSize}, "the volume descriptors"});
        return areas;
    }

    CByteSource& m_image;
    std::int64_t m_sectors;  ///< whole ones
    std::vector<SIsoVolume> m_volumes;
    std::optional<SUdfVolume> m_udf;
    std::vector<std::string> m_problems;
};

}  // namespace

std::vector<std::string> StructureProblems(CByteSource& image) {
    return CStructureCheck(image).Run();
}

}  // namespace vantrel
