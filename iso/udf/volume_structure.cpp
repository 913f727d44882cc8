#include "iso/udf/volume_structure.h"

#include <algorithm>
#include <bit>
#include <map>
#include <span>
#include <string_view>

#include "iso/udf.h"
#include "iso/udf/tag.h"
#include "iso/udf/unsupported.h"
#include "iso/volume.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::uint32_t kFirstRecognition = 16;  ///< sector of the first volume structure descriptor (ECMA-167 2/8.3)
constexpr std::uint32_t kClosingDistance = 256;  ///< from the last sector to another place of an anchor
/// Sectors that are read of a chain of sequences; sound ones have 16.
constexpr std::uint32_t kMostDescriptors = 1024;
constexpr std::size_t kMapsOffset = sizeof(SLogicalVolumeDescriptor);

using Descriptor = std::array<std::uint8_t, kSectorSize>;

/// What a main or reserve volume descriptor sequence holds.
struct SSequence {
    struct SNumbered {
        std::uint32_t sector = 0;
        Descriptor bytes = {};
        std::uint32_t Number() const { return LoadLe32(StructureAt<SSequenceDescriptor>(bytes).sequenceNumber); }
    };
    std::vector<SNumbered> partitions;
    std::optional<SNumbered> logicalVolume;  ///< the prevailing one
    std::string problem;                     ///< why it could not be read to its end; empty if it could
};

/// The partition of a logical volume, according to one sequence.
struct SFound {
    std::uint32_t start = 0;
    std::uint32_t sectors = 0;
    bool hasSpaceTables = false;
    std::array<SShortAllocation, 5> spaceTables = {};
    std::vector<std::uint32_t> descriptors;  ///< sectors
    SLongAllocation fileSet = {};
    SVolumeExtent integrity = {};
};

bool SameVolume(const SFound& a, const SFound& b) {
    return a.start == b.start && a.sectors == b.sectors && a.fileSet.block == b.fileSet.block &&
           a.integrity.sector == b.integrity.sector;
}

std::string_view TextOf(std::span<const std::uint8_t> bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return text.substr(0, text.find('\0'));
}

/// Refuses volumes of which a file's blocks are not simply counted from the start of one partition.
std::uint16_t PlainPartitionNumber(const Descriptor& bytes) {
    const auto volume = StructureAt<SLogicalVolumeDescriptor>(bytes);
    if (LoadLe32(volume.blockSize) != kSectorSize) {
        throw CUnsupportedUdf(
            Format("UDF volumes with blocks of %u bytes are not supported", LoadLe32(volume.blockSize)));
    }
    const std::uint32_t count = LoadLe32(volume.mapCount);
    std::size_t offset = kMapsOffset;
    for (std::uint32_t i = 0; i < count && offset + 28 <= bytes.size(); ++i) {
        const auto map = StructureAt<SPartitionMap>(std::span(bytes).subspan(offset));
        if (map.type == kMapByIdentifier) {
            const std::string_view name = TextOf(std::span(bytes).subspan(offset + 5, 23));
            throw CUnsupportedUdf(Format("UDF volumes with a partition map \"%.*s\" are not supported",
                                         static_cast<int>(name.size()), name.data()));
        }
        offset += std::max<std::size_t>(map.length, sizeof(SPartitionMap));
    }
    if (count != 1) {
        throw CUnsupportedUdf(Format("UDF volumes of %u partitions are not supported", count));
    }
    const auto map = StructureAt<SPartitionMap>(std::span(bytes).subspan(kMapsOffset));
    if (map.type != kMapPlain) {
        throw CUnsupportedUdf(Format("UDF partition maps of type %u are not supported", unsigned{map.type}));
    }
    return LoadLe16(map.partitionNumber);
}

class CStructureReader {
public:
    explicit CStructureReader(CByteSource& image)
        : m_image(image),
          m_sectors(static_cast<std::uint32_t>(std::clamp<std::int64_t>(image.Size() / kSectorSize, 0, UINT32_MAX))) {}

    std::optional<SVolumeStructure> Read() {
        if (!FindRecognition()) {
            return std::nullopt;
        }
        FindAnchors();
        const auto anchor = StructureAt<SAnchorPointer>(ReadSector(m_found.anchors.front()));
        AddArea(anchor.mainSequence);
        AddArea(anchor.reserveSequence);
        std::string problem;
        const std::optional<SFound> main = FindPartition("main", anchor.mainSequence, problem);
        const std::optional<SFound> reserve = FindPartition("reserve", anchor.reserveSequence, problem);
        if (!main && !reserve) {
            throw CRefused(problem);
        }
        if (main && reserve && !SameVolume(*main, *reserve)) {
            m_found.findings.emplace_back("the main and the reserve UDF volume descriptor sequence disagree");
        }
        Take(main ? *main : *reserve);
        if (main && reserve) {
            Append(m_found.partitionDescriptors, reserve->descriptors);
        }
        return std::move(m_found);
    }

private:
    static void Append(std::vector<std::uint32_t>& list, const std::vector<std::uint32_t>& more) {
        list.insert(list.end(), more.begin(), more.end());
    }

    /// Zeros beyond the end of the image.
    Descriptor ReadSector(std::uint32_t sector) {
        Descriptor bytes = {};
        m_image.ReadAt(sector * kSectorSize, bytes);
        return bytes;
    }

    void AddArea(std::uint32_t sector, std::int64_t bytes) {
        const std::int64_t end = std::min<std::int64_t>(sector + SectorsFor(bytes), m_sectors);
        if (end > sector) {
            m_found.areas.push_back({sector, (end - sector) * kSectorSize});
        }
    }
    void AddArea(const SVolumeExtent& extent) { AddArea(LoadLe32(extent.sector), LoadLe32(extent.length)); }

    /// Whether one of the volume structure descriptors (ECMA-167 2/9) names the UDF file system.
    bool FindRecognition() {
        constexpr std::array<std::string_view, 5> kOthers = {"CD001", "BEA01", "BOOT2", "CDW02", "TEA01"};
        bool found = false;
        for (std::uint32_t sector = kFirstRecognition; sector < kAnchorSector; ++sector) {
            const auto descriptor = ReadSector(sector);
            const std::string_view name = TextOf(std::span(descriptor).subspan(1, 5));
            const bool isUdf = name == "NSR02" || name == "NSR03";
            if (!isUdf && std::find(kOthers.begin(), kOthers.end(), name) == kOthers.end()) {
                break;
            }
            found = found || isUdf;
            AddArea(sector, kSectorSize);
        }
        return found;
    }

    bool IsAnchor(std::uint32_t sector) { return TagProblem(ReadSector(sector), kTagAnchor, sector).empty(); }

    /// Anchors stand in two of three places (ECMA-167 3/8.4.2.1). The end of the volume is that of the image, unless
    /// something follows the volume in the image.
    void FindAnchors() {
        std::vector<std::uint32_t> candidates = {kAnchorSector};
        for (const std::uint32_t end : {m_sectors, ReadPrimaryVolume(m_image).volumeSpaceSize.Value()}) {
            if (end > kAnchorSector + 1 && end <= m_sectors) {
                candidates.push_back(end - 1);
                candidates.push_back(end - 1 - std::min(kClosingDistance, end - 1));
            }
        }
        std::sort(candidates.begin(), candidates.end());
        candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
        for (const std::uint32_t sector : candidates) {
            const auto bytes = ReadSector(sector);
            if (TagProblem(bytes, kTagAnchor, sector).empty()) {
                m_found.anchors.push_back(sector);
            } else if (TagIdentifier(bytes) == kTagAnchor &&
                       LoadLe32(StructureAt<SAnchorPointer>(bytes).tag.location) == sector) {
                m_found.findings.push_back(
                    Format("the UDF anchor in sector %u: %s", sector, TagProblem(bytes, kTagAnchor, sector).c_str()));
            }
        }
        if (m_found.anchors.empty()) {
            throw CRefused("the image is marked as UDF, but neither sector 256 nor its end has a valid anchor");
        }
        FindClosingAnchors();
        for (const std::uint32_t sector : m_found.anchors) {
            AddArea(sector, kSectorSize);
        }
    }

    void FindClosingAnchors() {
        const std::uint32_t last = m_found.anchors.back();
        const std::uint32_t volumeSectors = ReadPrimaryVolume(m_image).volumeSpaceSize.Value();
        if (last == kAnchorSector || (last + 1 != m_sectors && last + 1 != volumeSectors)) {
            return;
        }
        std::uint32_t first = last;
        while (first - 1 > kAnchorSector && IsAnchor(first - 1)) {
            --first;
        }
        m_found.closingAnchors = last - first + 1;
        std::erase_if(m_found.anchors, [first](std::uint32_t sector) { return sector >= first; });
        for (std::uint32_t sector = first; sector <= last; ++sector) {
            m_found.anchors.push_back(sector);
        }
    }

    /// Reads a sequence up to its terminating descriptor, the first unrecorded sector or the first fault (ECMA-167
    /// 3/8.4.2).
    SSequence ReadSequence(SVolumeExtent extent) {
        SSequence sequence;
        std::uint32_t sector = LoadLe32(extent.sector);
        std::int64_t left = LoadLe32(extent.length) / kSectorSize;
        for (std::uint32_t count = 0; count < kMostDescriptors && left > 0; ++count, ++sector, --left) {
            const auto bytes = ReadSector(sector);
            const std::uint16_t identifier = TagIdentifier(bytes);
            if (identifier == 0) {
                break;
            }
            sequence.problem = TagProblem(bytes, identifier, sector);
            if (!sequence.problem.empty()) {
                sequence.problem = Format("sector %u: ", sector) + sequence.problem;
                break;
            }
            if (identifier == kTagTerminating) {
                break;
            }
            if (identifier == kTagVolumePointer) {
                const SVolumeExtent next = StructureAt<SVolumePointer>(bytes).next;
                AddArea(next);
                sector = LoadLe32(next.sector) - 1;
                left = LoadLe32(next.length) / kSectorSize + 1;
            }
            Keep(sequence, {sector, bytes}, identifier);
        }
        return sequence;
    }

    static void Keep(SSequence& sequence, const SSequence::SNumbered& descriptor, std::uint16_t identifier) {
        if (identifier == kTagPartition) {
            sequence.partitions.push_back(descriptor);
        } else if (identifier == kTagLogicalVolume &&
                   (!sequence.logicalVolume || sequence.logicalVolume->Number() <= descriptor.Number())) {
            sequence.logicalVolume = descriptor;
        }
    }

    /// The partition that a sequence describes; otherwise the first problem found, which is also a finding.
    std::optional<SFound> FindPartition(const char* name, const SVolumeExtent& extent, std::string& problem) {
        const SSequence sequence = ReadSequence(extent);
        const auto fail = [&](const std::string& reason) {
            m_found.findings.push_back(Format("the %s UDF volume descriptor sequence: %s", name, reason.c_str()));
            problem = problem.empty() ? m_found.findings.back() : problem;
            return std::nullopt;
        };
        if (!sequence.problem.empty()) {
            return fail(sequence.problem);
        }
        if (!sequence.logicalVolume) {
            return fail("it has no logical volume descriptor");
        }
        const auto volume = StructureAt<SLogicalVolumeDescriptor>(sequence.logicalVolume->bytes);
        const std::uint16_t number = PlainPartitionNumber(sequence.logicalVolume->bytes);
        SFound found;
        std::optional<std::uint32_t> prevailing;
        for (const SSequence::SNumbered& partition : sequence.partitions) {
            const auto descriptor = StructureAt<SPartitionDescriptor>(partition.bytes);
            if (LoadLe16(descriptor.number) != number) {
                continue;
            }
            found.descriptors.push_back(partition.sector);
            if (!prevailing || *prevailing <= partition.Number()) {
                prevailing = partition.Number();
                found.start = LoadLe32(descriptor.start);
                found.sectors = LoadLe32(descriptor.sectors);
                found.spaceTables = descriptor.spaceTables;
            }
        }
        if (!prevailing) {
            return fail("it has no descriptor of the volume's partition");
        }
        found.fileSet = volume.fileSet;
        found.integrity = volume.integritySequence;
        return found;
    }

    void Take(const SFound& found) {
        m_found.partitionStart = found.start;
        m_found.partitionSectors = found.sectors;
        m_found.partitionDescriptors = found.descriptors;
        m_found.fileSet = found.fileSet;
        for (const SShortAllocation& table : found.spaceTables) {
            const std::uint32_t length = LoadLe32(table.length) & ((1U << kExtentLengthBits) - 1);
            m_found.hasSpaceTables = m_found.hasSpaceTables || length != 0;
            const std::int64_t sector = std::int64_t{found.start} + LoadLe32(table.block);
            AddArea(static_cast<std::uint32_t>(std::min<std::int64_t>(sector, m_sectors)), length);
        }
        if (std::int64_t{found.start} + found.sectors > m_sectors) {
            m_found.findings.push_back(Format("the UDF partition has the sectors %u to %lld, the image has %u",
                                              found.start, static_cast<long long>(found.start) + found.sectors - 1,
                                              m_sectors));
        }
        ReadIntegrity(found.integrity);
    }

    /// The chain of integrity descriptors (ECMA-167 3/8.8.2); the last one prevails.
    void ReadIntegrity(SVolumeExtent extent) {
        AddArea(extent);
        std::uint32_t sector = LoadLe32(extent.sector);
        std::int64_t left = LoadLe32(extent.length) / kSectorSize;
        for (std::uint32_t count = 0; count < kMostDescriptors && left > 0; ++count, ++sector, --left) {
            const auto bytes = ReadSector(sector);
            if (TagIdentifier(bytes) != kTagIntegrity) {
                break;
            }
            const std::string problem = TagProblem(bytes, kTagIntegrity, sector);
            if (!problem.empty()) {
                m_found.findings.push_back(
                    Format("the UDF integrity descriptor in sector %u: %s", sector, problem.c_str()));
                break;
            }
            m_found.integrityDescriptors.push_back(sector);
            const SVolumeExtent next = StructureAt<SIntegrityDescriptor>(bytes).next;
            if (LoadLe32(next.length) != 0) {
                AddArea(next);
                sector = LoadLe32(next.sector) - 1;
                left = LoadLe32(next.length) / kSectorSize + 1;
            }
        }
    }

    CByteSource& m_image;
    const std::uint32_t m_sectors;  ///< whole ones
    SVolumeStructure m_found;
};

}  // namespace

std::optional<SVolumeStructure> ReadVolumeStructure(CByteSource& image) {
    return CStructureReader(image).Read();
}

}  // namespace vantrel
