#include "iso/udf/udf_volume.h"

#include <algorithm>
#include <deque>
#include <map>
#include <span>

#include "iso/udf/file_entry.h"
#include "iso/udf/osta_name.h"
#include "iso/udf/partition.h"
#include "iso/udf/tag.h"
#include "iso/udf/unsupported.h"
#include "iso/udf/volume_structure.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// Bytes that the list of files may take; a million files with common names take half of it.
constexpr std::size_t kMostMemory = 256U << 20U;
/// Blocks of the extent of the file set descriptor that can belong to it.
constexpr std::uint32_t kMostFileSetBlocks = 64;

/// The content of a directory as a stream of file identifier descriptors (ECMA-167 4/14.4).
class CIdentifierStream {
public:
    CIdentifierStream(CPartition& partition, std::vector<SExtent> extents)
        : m_partition(partition), m_extents(std::move(extents)) {}
    /// A directory that is embedded in the entry at `entryBlock`.
    CIdentifierStream(CPartition& partition, std::vector<std::uint8_t> embedded, std::uint32_t entryBlock)
        : m_partition(partition), m_bytes(std::move(embedded)), m_blocks({entryBlock}) {}

    /// Moves to the next descriptor, whose bytes are valid until the next call. Empty at the end.
    std::span<const std::uint8_t> Next() {
        Skip(m_current);
        m_current = 0;
        if (!Fill(1)) {
            return {};
        }
        Need(sizeof(SFileIdentifier));
        const auto head = StructureAt<SFileIdentifier>(m_bytes);
        const std::size_t length = sizeof(SFileIdentifier) + LoadLe16(head.implementationUseLength) + head.nameLength;
        m_current = (length + 3) / 4 * 4;
        Need(m_current);
        const auto bytes = std::span(m_bytes).first(m_current);
        const std::string problem = TagProblem(bytes, kTagFileIdentifier, m_blocks.front());
        if (!problem.empty()) {
            throw CRefused(problem);
        }
        return bytes;
    }

private:
    void Need(std::size_t count) {
        if (!Fill(count)) {
            throw CRefused("the directory ends within a record");
        }
    }

    /// Reads blocks until so many bytes are there.
    bool Fill(std::size_t count) {
        while (m_bytes.size() < count && m_extent < m_extents.size()) {
            ReadBlock();
        }
        return m_bytes.size() >= count;
    }

    void ReadBlock() {
        SExtent& extent = m_extents[m_extent];
        const std::uint32_t block = m_partition.BlockOf(extent.sector);
        const std::optional<UdfBlock> bytes = m_partition.Take(block);
        if (!bytes) {
            throw CRefused(Format("sector %u belongs to something else or is outside the image", extent.sector));
        }
        const std::int64_t count = std::min(kSectorSize, extent.size);
        m_bytes.insert(m_bytes.end(), bytes->begin(), bytes->begin() + count);
        m_blocks.push_back(block);
        ++extent.sector;
        extent.size -= count;
        m_extent += extent.size == 0 ? 1U : 0U;
    }

    /// Drops bytes from the front, and each block of which none is left.
    void Skip(std::size_t count) {
        m_bytes.erase(m_bytes.begin(), m_bytes.begin() + static_cast<std::ptrdiff_t>(count));
        for (m_inBlock += count; m_inBlock >= kSectorSize; m_inBlock -= kSectorSize) {
            m_blocks.pop_front();
        }
    }

    CPartition& m_partition;
    std::vector<SExtent> m_extents;  ///< the parts that are not yet read, from `m_extent` on
    std::size_t m_extent = 0;
    std::vector<std::uint8_t> m_bytes;   ///< from the current descriptor on
    std::deque<std::uint32_t> m_blocks;  ///< those of the bytes
    std::size_t m_inBlock = 0;           ///< where the bytes start in the first of these
    std::size_t m_current = 0;           ///< length of the current descriptor
};

class CTreeReader {
public:
    CTreeReader(CByteSource& image, SVolumeStructure structure)
        : m_structure(std::move(structure)),
          m_partition(image, m_structure.partitionStart, m_structure.partitionSectors),
          m_image(image) {}

    SUdfVolume Read() {
        try {
            Enter({}, RootBlock(), true);
            for (std::size_t i = 0; i < m_volume.files.size(); ++i) {
                if (m_volume.files[i].isFolder) {
                    ReadFolder(m_volume.files[i]);
                }
            }
        } catch (const CUnsupportedUdf& refused) {
            throw CUnsupportedUdf(m_place + refused.what());
        } catch (const CRefused& refused) {
            throw CRefused(m_place + refused.what());
        }
        m_volume.anchors = std::move(m_structure.anchors);
        m_volume.closingAnchors = m_structure.closingAnchors;
        m_volume.partitionStart = m_structure.partitionStart;
        m_volume.partitionSectors = m_structure.partitionSectors;
        m_volume.findings = std::move(m_structure.findings);
        JoinStructures();
        return std::move(m_volume);
    }

private:
    /// A block of structures that nothing else uses.
    UdfBlock Take(std::uint32_t block) {
        const std::optional<UdfBlock> bytes = m_partition.Take(block);
        if (!bytes) {
            throw CRefused("it belongs to something else or is outside the image");
        }
        return *bytes;
    }

    /// The block of the root's file entry, from the file set descriptor (ECMA-167 4/14.1).
    std::uint32_t RootBlock() {
        const std::uint32_t block = LoadLe32(m_structure.fileSet.block);
        m_place = Format("the UDF file set descriptor in block %u of the partition: ", block);
        const UdfBlock bytes = Take(block);
        const std::string problem = TagProblem(bytes, kTagFileSet, block);
        if (!problem.empty()) {
            throw CRefused(problem);
        }
        const auto blocks = static_cast<std::uint32_t>(SectorsFor(LoadLe32(m_structure.fileSet.length)));
        for (std::uint32_t i = 1; i < std::min(blocks, kMostFileSetBlocks); ++i) {
            m_partition.Take(block + i);  // its terminating descriptor and unused ones
        }
        const auto descriptor = StructureAt<SFileSetDescriptor>(bytes);
        if (LoadLe32(descriptor.streams.length) != 0) {
            throw CUnsupportedUdf("named streams are not supported");
        }
        return LoadLe32(descriptor.root.block);
    }

    void Enter(const std::string& path, std::uint32_t block, bool isFolder) {
        m_place = Format("the UDF file entry of \"/%s\" in sector %u: ", path.c_str(), m_partition.SectorOf(block));
        const auto [known, isNew] = m_byBlock.try_emplace(block, m_volume.files.size());
        SUdfFile file = isNew ? ReadEntry(block) : m_volume.files[known->second];
        if (file.isFolder != isFolder) {
            throw CRefused(isFolder ? "it is the entry of a file, its name is that of a folder"
                                    : "it is the entry of a folder, its name is that of a file");
        }
        if (!isNew && isFolder) {
            throw CRefused("the folder has a second name, \"/" + file.path + '"');
        }
        file.path = path;
        TakeMemory(sizeof(SUdfFile) + path.size() + file.extents.size() * sizeof(SExtent));
        m_volume.files.push_back(std::move(file));
    }

    void TakeMemory(std::size_t bytes) {
        m_memory += bytes;
        if (m_memory > kMostMemory) {
            throw CUnsupportedUdf("the volume has too many names");
        }
    }

    SUdfFile ReadEntry(std::uint32_t block) {
        const UdfBlock bytes = Take(block);
        const SEntryFields fields = ReadEntryFields(bytes, block);
        SUdfFile file = {{}, m_partition.SectorOf(block), fields.isFolder, fields.size, {}, false};
        if (fields.allocation == EAllocation::Embedded) {
            file.embedded = true;
            if (static_cast<std::size_t>(fields.size) != fields.allocationLength) {
                throw CRefused("its length is not that of the embedded content");
            }
            return file;
        }
        AddExtents(file, std::span(bytes).subspan(fields.allocationStart, fields.allocationLength), fields.allocation);
        FitExtents(file);
        return file;
    }

    /// Follows the allocation descriptors to the end of the content (ECMA-167 4/12).
    void AddExtents(SUdfFile& file, std::span<const std::uint8_t> list, EAllocation kind) {
        UdfBlock continuation = {};
        for (bool isContinued = true; isContinued;) {
            isContinued = false;
            for (const SBlockExtent& extent : AllocationsOf(list, kind)) {
                if (extent.type == EExtentType::Continuation) {
                    continuation = Take(extent.block);
                    list = ContinuedList(continuation, extent.block);
                    isContinued = true;
                    break;
                }
                AddExtent(file, extent);
            }
        }
    }

    static std::span<const std::uint8_t> ContinuedList(std::span<const std::uint8_t> block, std::uint32_t location) {
        const std::string problem = TagProblem(block, kTagAllocationExtent, location);
        if (!problem.empty()) {
            throw CRefused("the continuation of its extents: " + problem);
        }
        const std::size_t length = LoadLe32(StructureAt<SAllocationExtent>(block).length);
        const auto list = block.subspan(sizeof(SAllocationExtent));
        return list.first(std::min(length, list.size()));
    }

    void AddExtent(SUdfFile& file, const SBlockExtent& extent) {
        if (extent.type != EExtentType::Recorded) {
            throw CUnsupportedUdf("extents without recorded content are not supported");
        }
        if (!m_partition.Holds(extent.block, extent.length)) {
            throw CRefused(Format("its content, from sector %lld on, is outside the partition",
                                  static_cast<long long>(m_structure.partitionStart) + extent.block));
        }
        const std::uint32_t sector = m_partition.SectorOf(extent.block);
        if (file.extents.empty()) {
            file.extents.push_back({sector, extent.length});
            return;
        }
        SExtent& last = file.extents.back();
        if (last.size % kSectorSize != 0) {
            throw CRefused("an extent that is not the last one ends within a sector");
        }
        if (last.End() == sector * kSectorSize) {
            last.size += extent.length;
        } else {
            file.extents.push_back({sector, extent.length});
        }
    }

    /// Some programs round the length of the last extent up to whole sectors.
    static void FitExtents(SUdfFile& file) {
        std::int64_t sum = 0;
        for (const SExtent& extent : file.extents) {
            sum += extent.size;
        }
        if (sum < file.size || SectorsFor(sum) != SectorsFor(file.size)) {
            throw CRefused(Format("its length is %lld bytes, its extents have %lld", static_cast<long long>(file.size),
                                  static_cast<long long>(sum)));
        }
        if (!file.extents.empty()) {
            file.extents.back().size -= sum - file.size;
        }
    }

    CIdentifierStream Identifiers(const SUdfFile& folder) {
        if (!folder.embedded) {
            return {m_partition, folder.extents};
        }
        UdfBlock bytes = {};
        m_image.ReadAt(folder.entrySector * kSectorSize, bytes);
        const std::uint32_t block = m_partition.BlockOf(folder.entrySector);
        const SEntryFields fields = ReadEntryFields(bytes, block);
        const auto content = std::span(bytes).subspan(fields.allocationStart, fields.allocationLength);
        return {m_partition, {content.begin(), content.end()}, block};
    }

    void ReadFolder(const SUdfFile& folder) {
        const std::string path = folder.path;  // a copy: the list grows meanwhile
        const std::string place = Format("the UDF directory \"/%s\": ", path.c_str());
        m_place = place;
        CIdentifierStream identifiers = Identifiers(folder);
        for (auto bytes = identifiers.Next(); !bytes.empty(); bytes = identifiers.Next()) {
            const auto head = StructureAt<SFileIdentifier>(bytes);
            if ((head.characteristics & (kIdentifiesDeleted | kIdentifiesParent)) == 0) {
                Enter(PathIn(path, head, bytes), LoadLe32(head.entry.block),
                      (head.characteristics & kIdentifiesDirectory) != 0);
            }
            m_place = place;
        }
    }

    static std::string PathIn(const std::string& folder, const SFileIdentifier& head,
                              std::span<const std::uint8_t> bytes) {
        const std::size_t start = sizeof(SFileIdentifier) + LoadLe16(head.implementationUseLength);
        const std::optional<std::string> name = NameOfOsta(bytes.subspan(start, head.nameLength));
        if (!name) {
            throw CRefused("a name in it has no known character set");
        }
        if (LoadLe16(head.entry.partition) != 0) {
            throw CRefused("the entry of \"" + *name + "\" is in a partition that does not exist");
        }
        std::string path = folder.empty() ? *name : folder + '/' + *name;
        if (path.size() > kLongestPath) {
            throw CUnsupportedUdf(Format("paths of more than %zu bytes are not supported", kLongestPath));
        }
        return path;
    }

    void JoinStructures() {
        std::vector<SExtent>& areas = m_structure.areas;
        const std::vector<SExtent> taken = m_partition.Taken();
        areas.insert(areas.end(), taken.begin(), taken.end());
        std::sort(areas.begin(), areas.end(), [](const SExtent& a, const SExtent& b) { return a.sector < b.sector; });
        for (const SExtent& area : areas) {
            if (m_volume.structures.empty() || m_volume.structures.back().End() < area.Position()) {
                m_volume.structures.push_back(area);
            } else {
                SExtent& last = m_volume.structures.back();
                last.size = std::max(last.End(), area.End()) - last.Position();
            }
        }
    }

    SVolumeStructure m_structure;
    CPartition m_partition;
    CByteSource& m_image;
    SUdfVolume m_volume;
    std::map<std::uint32_t, std::size_t> m_byBlock;  ///< index of the first file with this entry
    std::size_t m_memory = 0;                        ///< bytes that the list of files takes
    std::string m_place;                             ///< what is read at the moment, for messages
};

}  // namespace

std::optional<SUdfVolume> ReadUdfVolume(CByteSource& image) {
    std::optional<SVolumeStructure> structure = ReadVolumeStructure(image);
    if (!structure) {
        return std::nullopt;
    }
    return CTreeReader(image, *std::move(structure)).Read();
}

}  // namespace vantrel
