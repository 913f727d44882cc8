#include "tests/support/image_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <stdexcept>

namespace vantrel::test {

namespace {

constexpr std::uint32_t kDescriptorSector = 16;
constexpr std::uint32_t kCdTablesSector = 18;
constexpr std::uint32_t kDvdTablesSector = 257;
constexpr std::uint32_t kAnchorSector = 256;
constexpr std::uint32_t kUdfSequenceSector = 32;
constexpr std::size_t kUdfMarkOffset = 389;  // implementation identifier of the first descriptor
constexpr std::uint8_t kFlagDirectory = 2;

std::uint32_t SectorsOf(std::size_t bytes) {
    return static_cast<std::uint32_t>((bytes + kImageSector - 1) / kImageSector);
}

struct SNode {
    std::string name;
    SNode* parent = nullptr;
    std::vector<std::unique_ptr<SNode>> folders;
    std::vector<std::pair<std::string, std::size_t>> files;  // name, index in the description
    std::uint16_t number = 0;
    std::uint32_t level = 0;
    std::uint32_t sector = 0;
    std::uint32_t size = 0;
    std::size_t pathTableOffset = 0;

    std::string Path() const { return parent == nullptr ? "" : parent->Path() + "\\" + name; }

    SNode& Folder(const std::string& wanted) {
        for (const auto& folder : folders) {
            if (folder->name == wanted) {
                return *folder;
            }
        }
        folders.push_back(std::make_unique<SNode>());
        SNode& made = *folders.back();
        made.name = wanted;
        made.parent = this;
        made.level = level + 1;
        return made;
    }
};

/// Masters one image: assigns all sectors first, then writes everything to its place.
class CImageBuilder {
public:
    explicit CImageBuilder(const SImageDescription& description) : m_description(description) {}

    SBuiltImage Build() {
        BuildTree();
        NumberDirectories();
        AssignSectors();
        WriteDescriptors();
        WritePathTables();
        WriteDirectories();
        if (IsDvd()) {
            WriteUdf();
        }
        WriteFiles();
        DescribeImage();
        return std::move(m_image);
    }

private:
    bool IsDvd() const { return m_description.kind == EImageKind::Dvd; }

    // --- the tree -------------------------------------------------------------------------------------------------

    SNode& FolderOfPath(const std::string& path) {
        SNode* node = &m_root;
        std::size_t start = 0;
        while (start < path.size()) {
            const std::size_t end = std::min(path.find('/', start), path.size());
            node = &node->Folder(path.substr(start, end - start));
            start = end + 1;
        }
        return *node;
    }

    void BuildTree() {
        for (const std::string& folder : m_description.folders) {
            FolderOfPath(folder);
        }
        for (std::size_t i = 0; i < m_description.files.size(); ++i) {
            const std::string& path = m_description.files[i].path;
            const std::size_t slash = path.rfind('/');
            SNode& folder = slash == std::string::npos ? m_root : FolderOfPath(path.substr(0, slash));
            folder.files.emplace_back(slash == std::string::npos ? path : path.substr(slash + 1), i);
        }
    }

    /// ECMA-119 6.9.1: by level, then by the number of the parent, then by name.
    void NumberDirectories() {
        m_directories = {&m_root};
        for (std::size_t i = 0; i < m_directories.size(); ++i) {
            SNode& node = *m_directories[i];
            node.number = static_cast<std::uint16_t>(i + 1);
            std::sort(node.folders.begin(), node.folders.end(),
                      [](const auto& a, const auto& b) { return a->name < b->name; });
            std::sort(node.files.begin(), node.files.end());
            for (const auto& folder : node.folders) {
                m_directories.push_back(folder.get());
            }
        }
        for (const SNode* node : m_directories) {
            const std::size_t name = node->parent == nullptr ? 1 : node->name.size();
            m_pathTableBytes += static_cast<std::uint32_t>(8 + name + name % 2);
        }
    }

    // --- directory records (ECMA-119 9.1) -------------------------------------------------------------------------

    std::string RecordedName(const std::string& name) const { return m_description.versions ? name + ";1" : name; }

    std::size_t RecordLength(std::size_t nameLength) const {
        const std::size_t even = 33 + nameLength + (nameLength % 2 == 0 ? 1 : 0);
        return even + (m_description.xaAttributes ? 14 : 0);
    }

    struct SRecord {
        std::string name;
        std::uint32_t sector;
        std::uint32_t size;
        std::uint8_t flags;
        std::size_t file;  // index in the description, or npos
    };

    Bytes RecordBytes(const SRecord& record) const {
        Bytes bytes(RecordLength(record.name.size()));
        bytes[0] = static_cast<std::uint8_t>(bytes.size());
        WriteBoth32(bytes, 2, record.sector);
        WriteBoth32(bytes, 10, record.size);
        const std::array<std::uint8_t, 7> date = {104, 3, 4, 12, 0, 0, 0};
        std::copy(date.begin(), date.end(), bytes.begin() + 18);
        bytes[25] = record.flags;
        WriteBoth16(bytes, 28, 1);
        bytes[32] = static_cast<std::uint8_t>(record.name.size());
        std::copy(record.name.begin(), record.name.end(), bytes.begin() + 33);
        if (m_description.xaAttributes) {
            const std::size_t at = bytes.size() - 14;
            bytes[at + 4] = record.flags == kFlagDirectory ? 0x8D : 0x0D;
            bytes[at + 5] = 0x55;
            bytes[at + 6] = 'X';
            bytes[at + 7] = 'A';
        }
        return bytes;
    }

    std::vector<SRecord> RecordsOf(const SNode& node) const {
        const SNode& parent = node.parent == nullptr ? node : *node.parent;
        std::vector<SRecord> records = {
            {std::string(1, '\0'), node.sector, node.size, kFlagDirectory, std::string::npos},
            {std::string(1, '\1'), parent.sector, parent.size, kFlagDirectory, std::string::npos}};
        for (const auto& folder : node.folders) {
            records.push_back({folder->name, folder->sector, folder->size, kFlagDirectory, std::string::npos});
        }
        for (const auto& [name, index] : node.files) {
            const auto size = static_cast<std::uint32_t>(m_description.files[index].content.size());
            records.push_back({RecordedName(name), m_fileSectors[index], size, 0, index});
        }
        std::sort(records.begin() + 2, records.end(),
                  [](const SRecord& a, const SRecord& b) { return a.name < b.name; });
        return records;
    }

    /// Calls place(offset in the directory, record) for each record, none of which crosses a sector. Returns the size
    /// in bytes.
    template <class TPlace>
    std::uint32_t LayOutRecords(const SNode& node, TPlace place) const {
        std::size_t offset = 0;
        for (const SRecord& record : RecordsOf(node)) {
            const std::size_t length = RecordLength(record.name.size());
            if (offset % kImageSector + length > kImageSector) {
                offset += kImageSector - offset % kImageSector;
            }
            place(offset, record);
            offset += length;
        }
        return SectorsOf(offset) * kImageSector;
    }

    // --- sectors --------------------------------------------------------------------------------------------------

    void AssignSectors() {
        const std::uint32_t table = SectorsOf(m_pathTableBytes);
        std::uint32_t next = IsDvd() ? kDvdTablesSector : kCdTablesSector;
        m_tableL = next;
        next += table * (m_description.optionalPathTables ? 2 : 1);
        m_tableM = next;
        next += table * (m_description.optionalPathTables ? 2 : 1);
        m_udfBefore = next;
        const bool hasEntries = IsDvd() && m_description.udf == EUdf::Marks;
        next += hasEntries ? m_description.udfEntriesBefore : 0;
        m_fileSectors.resize(m_description.files.size());
        for (SNode* node : m_directories) {
            node->sector = next;
            node->size = LayOutRecords(*node, [](std::size_t, const SRecord&) {});
            next += node->size / kImageSector;
        }
        m_image.directoryEnd = next;
        m_udfAfter = next + m_description.udfHoleBeforeEntries;
        if (hasEntries && m_description.udfEntriesAfter > 0) {
            next = m_udfAfter + m_description.udfEntriesAfter;
        } else if (IsDvd() && m_description.udf == EUdf::Volume) {
            next = EndOfUdf(UdfVolume());
        }
        m_image.headerEnd = next;
        AssignFiles(next);
    }

    void AssignFiles(std::uint32_t next) {
        for (std::size_t i = 0; i < m_description.files.size(); ++i) {
            const SImageFile& file = m_description.files[i];
            FillSectors(next, file.holeBefore);
            next += file.holeBefore;
            m_fileSectors[i] = next;
            if (file.content.empty()) {
                next += file.whenEmpty == EEmptyFile::OwnsSector ? 1 : 0;
            } else {
                next += SectorsOf(file.content.size());
            }
        }
        FillSectors(next, m_description.tailSectors);
        next += m_description.tailSectors;
        next += IsDvd() && m_description.anchorAtEnd ? 1 : 0;
        const EPostgap postgap = m_description.postgap;
        const bool counted = postgap == EPostgap::Missing || postgap == EPostgap::Counted;
        const bool there = postgap == EPostgap::Uncounted || postgap == EPostgap::Counted;
        m_image.volumeSectors = next + (counted ? kPostgapSectors : 0);
        m_image.bytes.resize((next + (there ? kPostgapSectors : 0)) * std::size_t{kImageSector});
        m_lastDataSector = next - 1;
        for (const auto& [sector, count] : m_filled) {
            std::fill_n(At(sector), std::size_t{count} * kImageSector, m_description.holeFill);
        }
    }

    void FillSectors(std::uint32_t sector, std::uint32_t count) { m_filled.emplace_back(sector, count); }

    Bytes::iterator At(std::uint32_t sector) {
        return m_image.bytes.begin() + static_cast<std::ptrdiff_t>(std::size_t{sector} * kImageSector);
    }

    // --- structures -----------------------------------------------------------------------------------------------

    static void WriteBoth32(Bytes& bytes, std::size_t offset, std::uint32_t value) {
        Write32(bytes, offset, value);
        for (std::size_t i = 0; i < 4; ++i) {
            bytes.at(offset + 7 - i) = static_cast<std::uint8_t>(value >> (8U * i));
        }
    }

    static void WriteBoth16(Bytes& bytes, std::size_t offset, std::uint16_t value) {
        bytes.at(offset) = bytes.at(offset + 3) = static_cast<std::uint8_t>(value);
        bytes.at(offset + 1) = bytes.at(offset + 2) = static_cast<std::uint8_t>(value >> 8U);
    }

    static std::uint32_t Swapped(std::uint32_t value) {
        return value >> 24U | (value >> 8U & 0xFF00U) | (value << 8U & 0xFF0000U) | value << 24U;
    }

    void PutText(std::size_t offset, std::string_view text, std::size_t width) {
        std::fill_n(m_image.bytes.begin() + static_cast<std::ptrdiff_t>(offset), width, std::uint8_t{' '});
        std::copy(text.begin(), text.end(), m_image.bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    }

    /// ECMA-119 8.4 and 8.3.
    void WriteDescriptors() {
        const std::size_t pvd = std::size_t{kDescriptorSector} * kImageSector;
        Bytes& bytes = m_image.bytes;
        const std::uint32_t table = SectorsOf(m_pathTableBytes);
        const std::uint32_t optional = m_description.optionalPathTables ? table : 0;
        bytes[pvd] = 1;
        PutText(pvd + 1, "CD001", 5);
        bytes[pvd + 6] = 1;
        const bool psp = m_description.kind == EImageKind::Umd;
        PutText(pvd + 8, psp ? "PSP GAME" : "PLAYSTATION", 32);
        PutText(pvd + 40, m_description.volumeName, 32);
        WriteBoth32(bytes, pvd + 80, m_image.volumeSectors);
        WriteBoth16(bytes, pvd + 120, 1);
        WriteBoth16(bytes, pvd + 124, 1);
        WriteBoth16(bytes, pvd + 128, kImageSector);
        WriteBoth32(bytes, pvd + 132, m_pathTableBytes);
        Write32(bytes, pvd + 140, m_tableL);
        Write32(bytes, pvd + 144, optional == 0 ? 0 : m_tableL + optional);
        Write32(bytes, pvd + 148, Swapped(m_tableM));
        Write32(bytes, pvd + 152, optional == 0 ? 0 : Swapped(m_tableM + optional));
        SRecord root = {std::string(1, '\0'), m_root.sector, m_root.size, kFlagDirectory, std::string::npos};
        Bytes record = RecordBytes(root);
        record.resize(34);
        record[0] = 34;
        std::copy(record.begin(), record.end(), bytes.begin() + static_cast<std::ptrdiff_t>(pvd + 156));
        PutText(pvd + 190, "", 128 * 3);
        PutText(pvd + 574, psp ? "PSP GAME" : "PLAYSTATION", 128);
        PutText(pvd + 702, "", 111);
        for (std::size_t date = 0; date < 4; ++date) {
            PutText(pvd + 813 + date * 17, date < 2 ? "2004030412000000" : "0000000000000000", 16);
            bytes[pvd + 813 + date * 17 + 16] = 0;
        }
        bytes[pvd + 881] = 1;
        if (!IsDvd()) {
            PutText(pvd + 1024, "CD-XA001", 8);
        }
        bytes[pvd + kImageSector] = 255;
        PutText(pvd + kImageSector + 1, "CD001", 5);
        bytes[pvd + kImageSector + 6] = 1;
    }

    /// ECMA-119 9.4; type L, then type M.
    void WritePathTables() {
        const std::uint32_t table = SectorsOf(m_pathTableBytes);
        for (std::uint32_t copy = 0; copy < (m_description.optionalPathTables ? 2U : 1U); ++copy) {
            WritePathTable(m_tableL + copy * table, false);
            WritePathTable(m_tableM + copy * table, true);
        }
    }

    void WritePathTable(std::uint32_t sector, bool bigEndian) {
        Bytes& bytes = m_image.bytes;
        std::size_t offset = std::size_t{sector} * kImageSector;
        for (SNode* node : m_directories) {
            const std::string name = node->parent == nullptr ? std::string(1, '\0') : node->name;
            const std::uint16_t parent = node->parent == nullptr ? 1 : node->parent->number;
            if (sector == m_tableL) {
                node->pathTableOffset = offset;
            }
            bytes[offset] = static_cast<std::uint8_t>(name.size());
            Write32(bytes, offset + 2, bigEndian ? Swapped(node->sector) : node->sector);
            bytes[offset + (bigEndian ? 7 : 6)] = static_cast<std::uint8_t>(parent);
            bytes[offset + (bigEndian ? 6 : 7)] = static_cast<std::uint8_t>(parent >> 8U);
            std::copy(name.begin(), name.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset + 8));
            offset += 8 + name.size() + name.size() % 2;
        }
    }

    void WriteDirectories() {
        m_recordOffsets.resize(m_description.files.size());
        for (const SNode* node : m_directories) {
            LayOutRecords(*node, [&](std::size_t offset, const SRecord& record) {
                const Bytes bytes = RecordBytes(record);
                const std::size_t at = std::size_t{node->sector} * kImageSector + offset;
                std::copy(bytes.begin(), bytes.end(), m_image.bytes.begin() + static_cast<std::ptrdiff_t>(at));
                if (record.file != std::string::npos) {
                    m_recordOffsets[record.file] = at;
                    m_order.push_back(record.file);
                }
            });
        }
    }

    // --- UDF (ECMA-167): a volume, or only tags, anchors and file entries, as far as readers of tags need them -----

    void WriteTag(std::uint32_t sector, std::uint16_t identifier, std::size_t length) {
        WriteUdfTag(m_image.bytes, std::size_t{sector} * kImageSector, identifier, length, sector);
    }

    void WriteAnchor(std::uint32_t sector) {
        const std::size_t at = std::size_t{sector} * kImageSector;
        for (std::size_t copy = 0; copy < 2; ++copy) {
            Write32(m_image.bytes, at + 16 + copy * 8, 16 * kImageSector);
            Write32(m_image.bytes, at + 20 + copy * 8, kUdfSequenceSector);
        }
        WriteTag(sector, 2, 512);
    }

    void WriteFileEntry(std::uint32_t sector, std::uint32_t unique) {
        const std::size_t at = std::size_t{sector} * kImageSector;
        m_image.bytes[at + 16 + 11] = 5;  // file type: file
        Write64(m_image.bytes, at + 160, unique);
        Write32(m_image.bytes, at + 172, 8);
        WriteTag(sector, 261, 184);
    }

    /// The volume without places and lengths of files, which its structures' sectors do not depend on.
    SUdfDescription UdfVolume() const {
        SUdfDescription udf;
        udf.start = m_udfAfter;
        udf.lastSector = m_lastDataSector;
        udf.anchorAt256 = m_description.anchorAt256;
        udf.anchorAtEnd = m_description.anchorAtEnd;
        udf.folders = m_description.folders;
        for (const SImageFile& file : m_description.files) {
            udf.files.push_back({file.path});
        }
        return udf;
    }

    void WriteUdfVolumeOfFiles() {
        SUdfDescription udf = UdfVolume();
        for (std::size_t i = 0; i < udf.files.size(); ++i) {
            const std::size_t size = m_description.files[i].content.size();
            if (size > 0) {
                udf.files[i].extents = {{m_fileSectors[i], static_cast<std::uint32_t>(size)}};
            }
        }
        m_image.udf = WriteUdfVolume(m_image.bytes, udf);
    }

    void WriteUdf() {
        if (m_description.udf == EUdf::Volume) {
            WriteUdfVolumeOfFiles();
            return;
        }
        constexpr std::array<std::string_view, 3> kRecognition = {"BEA01", "NSR02", "TEA01"};
        for (std::uint32_t i = 0; i < kRecognition.size(); ++i) {
            const std::size_t at = std::size_t{kDescriptorSector + 2 + i} * kImageSector;
            PutText(at + 1, kRecognition[i], 5);
            m_image.bytes[at + 6] = 1;
        }
        constexpr std::array<std::uint16_t, 6> kSequence = {1, 4, 5, 6, 7, 8};
        PutText(std::size_t{kUdfSequenceSector} * kImageSector + kUdfMarkOffset, "DVD-ROM GENERATOR", 23);
        for (std::uint32_t i = 0; i < kSequence.size(); ++i) {
            WriteTag(kUdfSequenceSector + i, kSequence[i], 512);
        }
        if (m_description.anchorAt256) {
            WriteAnchor(kAnchorSector);
        }
        if (m_description.anchorAtEnd) {
            WriteAnchor(m_lastDataSector);
        }
        for (std::uint32_t i = 0; i < m_description.udfEntriesBefore; ++i) {
            WriteFileEntry(m_udfBefore + i, 16 + i);
        }
        for (std::uint32_t i = 0; i < m_description.udfEntriesAfter; ++i) {
            WriteFileEntry(m_udfAfter + i, 16 + m_description.udfEntriesBefore + i);
        }
    }

    // --- files and description ------------------------------------------------------------------------------------

    void WriteFiles() {
        for (std::size_t i = 0; i < m_description.files.size(); ++i) {
            const Bytes& content = m_description.files[i].content;
            const auto end = std::copy(content.begin(), content.end(), At(m_fileSectors[i]));
            const std::size_t rest = content.size() % kImageSector;
            std::fill_n(end, rest == 0 ? 0 : kImageSector - rest, m_description.paddingFill);
        }
    }

    void DescribeImage() {
        for (const std::size_t index : m_order) {
            const SImageFile& file = m_description.files[index];
            std::string path = "\\" + file.path;
            std::replace(path.begin(), path.end(), '/', '\\');
            m_image.files.push_back({path, m_fileSectors[index], file.content, m_recordOffsets[index]});
        }
        std::stable_sort(m_image.files.begin(), m_image.files.end(),
                         [](const SBuiltFile& a, const SBuiltFile& b) { return a.sector < b.sector; });
        for (const SNode* node : m_directories) {
            const std::uint16_t parent = node->parent == nullptr ? 1 : node->parent->number;
            m_image.directories.push_back({node->Path(), node->sector, node->size, parent, node->pathTableOffset});
        }
        m_image.pathTableSector = m_tableL;
        m_image.pathTableBytes = m_pathTableBytes;
    }

    const SImageDescription& m_description;
    SBuiltImage m_image;
    SNode m_root;
    std::vector<SNode*> m_directories;
    std::vector<std::uint32_t> m_fileSectors;
    std::vector<std::size_t> m_recordOffsets;
    std::vector<std::size_t> m_order;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> m_filled;
    std::uint32_t m_pathTableBytes = 0;
    std::uint32_t m_tableL = 0;
    std::uint32_t m_tableM = 0;
    std::uint32_t m_udfBefore = 0;
    std::uint32_t m_udfAfter = 0;
    std::uint32_t m_lastDataSector = 0;
};

}  // namespace

const SBuiltFile& SBuiltImage::File(std::string_view path) const {
    for (const SBuiltFile& file : files) {
        if (file.path == path) {
            return file;
        }
    }
    ADD_FAILURE() << "the image has no file " << path;
    throw std::out_of_range(std::string(path));
}

SBuiltImage BuildImage(const SImageDescription& description) {
    return CImageBuilder(description).Build();
}

std::vector<SImageFile> ManyFiles(std::size_t count, std::size_t folders, std::uint64_t seed) {
    static constexpr std::array<std::size_t, 14> kSizes = {0,    1,    2037, 2038, 2043, 2047, 2048,
                                                           2049, 4095, 4096, 4097, 61,   6143, 5000};
    std::mt19937_64 random(seed);
    std::vector<SImageFile> files;
    for (std::size_t i = 0; i < count; ++i) {
        std::string path;
        if (folders > 0) {
            std::size_t folder = i % (folders + 1);
            for (int depth = 0; folder > 0 && depth < 4; ++depth, folder /= 4) {
                path = "DIR" + std::to_string(folder) + "/" + path;
            }
        }
        const std::size_t size = kSizes[random() % kSizes.size()];
        SImageFile file = {path + "FILE" + std::to_string(i) + ".BIN", RandomBytes(size, seed + i), 0, {}};
        file.whenEmpty = random() % 2 == 0 ? EEmptyFile::OwnsSector : EEmptyFile::SharesSector;
        files.push_back(std::move(file));
    }
    std::shuffle(files.begin(), files.end(), random);
    return files;
}

}  // namespace vantrel::test
