#include "tests/support/udf_builder.h"

#include <algorithm>
#include <memory>
#include <string_view>

namespace vantrel::test {

namespace {

constexpr std::uint32_t kSector = 2048;
constexpr std::uint32_t kRecognitionSector = 18;
constexpr std::uint32_t kMainSequence = 32;
constexpr std::uint32_t kReserveSequence = 48;
constexpr std::uint32_t kSequenceSectors = 16;
constexpr std::uint32_t kIntegritySector = 64;
constexpr std::uint32_t kAnchorSector = 256;

std::size_t PaddedTo4(std::size_t length) {
    return (length + 3) / 4 * 4;
}

std::uint16_t CrcOf(const std::uint8_t* bytes, std::size_t count) {
    std::uint16_t crc = 0;
    for (std::size_t i = 0; i < count; ++i) {
        crc = static_cast<std::uint16_t>(crc ^ bytes[i] << 8U);
        for (int bit = 0; bit < 8; ++bit) {
            crc = static_cast<std::uint16_t>((crc & 0x8000U) != 0 ? crc << 1U ^ 0x1021U : crc << 1U);
        }
    }
    return crc;
}

void Write16(Bytes& bytes, std::size_t offset, std::size_t value) {
    bytes.at(offset) = static_cast<std::uint8_t>(value);
    bytes.at(offset + 1) = static_cast<std::uint8_t>(value >> 8U);
}

void WriteText(Bytes& bytes, std::size_t offset, std::string_view text) {
    std::copy(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

/// OSTA UDF 2.1.1: 8 bits per character if all characters have no more, else 16. Knows UTF-8 of up to three bytes.
Bytes OstaName(const std::string& name) {
    std::vector<std::uint32_t> units;
    for (std::size_t i = 0; i < name.size();) {
        const auto byte = [&](std::size_t at) { return static_cast<std::uint8_t>(name.at(at)); };
        if (byte(i) < 0x80) {
            units.push_back(byte(i));
            i += 1;
        } else if (byte(i) < 0xE0) {
            units.push_back((byte(i) & 0x1FU) << 6U | (byte(i + 1) & 0x3FU));
            i += 2;
        } else {
            units.push_back((byte(i) & 0xFU) << 12U | (byte(i + 1) & 0x3FU) << 6U | (byte(i + 2) & 0x3FU));
            i += 3;
        }
    }
    const bool isWide = std::any_of(units.begin(), units.end(), [](std::uint32_t unit) { return unit > 0xFF; });
    Bytes recorded = {static_cast<std::uint8_t>(isWide ? 16 : 8)};
    for (const std::uint32_t unit : units) {
        if (isWide) {
            recorded.push_back(static_cast<std::uint8_t>(unit >> 8U));
        }
        recorded.push_back(static_cast<std::uint8_t>(unit));
    }
    return recorded;
}

struct SNode {
    std::string name;
    SNode* parent = nullptr;
    const SUdfFileDescription* file = nullptr;  ///< Null for a folder.
    std::vector<std::unique_ptr<SNode>> children;
    std::uint32_t entryBlock = 0;
    std::uint32_t contentBlock = 0;            ///< of a folder
    std::vector<std::uint32_t> continuations;  ///< blocks

    std::string Path() const {
        return parent == nullptr ? "" : parent->parent == nullptr ? name : parent->Path() + "/" + name;
    }

    SNode& Child(const std::string& wanted) {
        for (const auto& child : children) {
            if (child->name == wanted) {
                return *child;
            }
        }
        children.push_back(std::make_unique<SNode>());
        children.back()->name = wanted;
        children.back()->parent = this;
        return *children.back();
    }

    static std::size_t RecordSize(const std::string& name) {
        return PaddedTo4(38 + (name.empty() ? 0 : OstaName(name).size()));
    }

    std::size_t FolderSize() const {
        std::size_t size = RecordSize("");
        for (const auto& child : children) {
            size += RecordSize(child->name);
        }
        return size;
    }
};

class CUdfBuilder {
public:
    explicit CUdfBuilder(const SUdfDescription& description) : m_description(description) {
        for (const std::string& folder : description.folders) {
            NodeOf(folder);
        }
        for (const SUdfFileDescription& file : description.files) {
            NodeOf(file.path).file = &file;
        }
        Collect(m_root);
        AssignBlocks();
    }

    std::uint32_t End() const { return m_description.start + m_end; }

    SBuiltUdf Write(Bytes& image) {
        m_image = &image;
        WriteRecognition();
        WriteSequence(kMainSequence);
        WriteSequence(kReserveSequence);
        WriteIntegrity();
        WriteAnchors();
        WriteFileSet();
        SBuiltUdf built;
        built.end = End();
        for (SNode* node : m_nodes) {
            WriteNode(*node);
            built.entries[node->Path()] = m_description.start + node->entryBlock;
            if (node->file == nullptr && m_description.folderAllocation != EUdfAllocation::Embedded) {
                built.directories[node->Path()] = m_description.start + node->contentBlock;
            }
        }
        return built;
    }

private:
    SNode& NodeOf(const std::string& path) {
        SNode* node = &m_root;
        for (std::size_t start = 0; start < path.size();) {
            const std::size_t end = std::min(path.find('/', start), path.size());
            node = &node->Child(path.substr(start, end - start));
            start = end + 1;
        }
        return *node;
    }

    void Collect(SNode& node) {
        m_nodes.push_back(&node);
        for (const auto& child : node.children) {
            Collect(*child);
        }
    }

    static bool SharesEntry(const SNode& node) { return node.file != nullptr && !node.file->sharesEntryOf.empty(); }

    void AssignBlocks() {
        std::uint32_t next = 2;
        for (SNode* node : m_nodes) {
            if (node->file == nullptr && m_description.folderAllocation != EUdfAllocation::Embedded) {
                node->contentBlock = next;
                next += static_cast<std::uint32_t>((node->FolderSize() + kSector - 1) / kSector);
            }
        }
        for (SNode* node : m_nodes) {
            const std::size_t perBlock = node->file == nullptr ? 0 : node->file->descriptorsPerBlock;
            for (std::size_t done = perBlock; perBlock > 0 && done < node->file->extents.size(); done += perBlock) {
                node->continuations.push_back(next++);
            }
        }
        for (SNode* node : m_nodes) {
            if (!SharesEntry(*node)) {
                node->entryBlock = next++;
            }
        }
        for (SNode* node : m_nodes) {
            if (SharesEntry(*node)) {
                node->entryBlock = NodeOf(node->file->sharesEntryOf).entryBlock;
            }
        }
        m_end = next;
    }

    static std::size_t At(std::uint32_t sector) { return std::size_t{sector} * kSector; }
    std::size_t AtBlock(std::uint32_t block) const { return At(m_description.start + block); }
    std::uint32_t PartitionSectors() const { return m_description.lastSector - m_description.start; }

    void Tag(std::uint32_t sector, std::uint16_t identifier, std::size_t length) {
        WriteUdfTag(*m_image, At(sector), identifier, length, sector);
    }

    /// ECMA-167 2/9
    void WriteRecognition() {
        constexpr std::string_view kNames[] = {"BEA01", "NSR02", "TEA01"};
        std::uint32_t sector = kRecognitionSector;
        for (const std::string_view name : kNames) {
            WriteText(*m_image, At(sector) + 1, name);
            m_image->at(At(sector++) + 6) = 1;
        }
    }

    /// ECMA-167 3/10: primary, implementation use, partition, logical volume, unallocated space, terminating.
    void WriteSequence(std::uint32_t first) {
        Bytes& image = *m_image;
        WriteText(image, At(first) + 389, "DVD-ROM GENERATOR");
        Tag(first, 1, 512);
        Write32(image, At(first + 1) + 16, 1);
        Tag(first + 1, 4, 512);

        const std::size_t partition = At(first + 2);
        Write32(image, partition + 16, 2);
        Write16(image, partition + 20, 1);
        WriteText(image, partition + 25, "+NSR02");
        Write32(image, partition + 184, 1);
        Write32(image, partition + 188, m_description.start);
        Write32(image, partition + 192, PartitionSectors());
        Tag(first + 2, 5, 512);

        const std::size_t volume = At(first + 3);
        Write32(image, volume + 16, 3);
        Write32(image, volume + 212, kSector);
        WriteText(image, volume + 217, "*OSTA UDF Compliant");
        Write32(image, volume + 248, 2 * kSector);  // file set descriptor and terminator, at block 0
        Write32(image, volume + 264, 6);
        Write32(image, volume + 268, 1);
        Write32(image, volume + 432, 2 * kSector);
        Write32(image, volume + 436, kIntegritySector);
        image.at(volume + 440) = 1;
        image.at(volume + 441) = 6;
        image.at(volume + 442) = 1;
        Tag(first + 3, 6, 446);

        Write32(image, At(first + 4) + 16, 4);
        Tag(first + 4, 7, 24);
        Tag(first + 5, 8, 512);
    }

    /// ECMA-167 3/10.10
    void WriteIntegrity() {
        const std::size_t at = At(kIntegritySector);
        Write32(*m_image, at + 28, 1);  // closed
        Write32(*m_image, at + 72, 1);
        Write32(*m_image, at + 76, 46);
        Write32(*m_image, at + 84, PartitionSectors());
        Tag(kIntegritySector, 9, 88 + 46);
        Tag(kIntegritySector + 1, 8, 512);
    }

    void WriteAnchors() {
        const auto write = [this](std::uint32_t sector) {
            const std::size_t at = At(sector);
            Write32(*m_image, at + 16, kSequenceSectors * kSector);
            Write32(*m_image, at + 20, kMainSequence);
            Write32(*m_image, at + 24, kSequenceSectors * kSector);
            Write32(*m_image, at + 28, kReserveSequence);
            Tag(sector, 2, 512);
        };
        if (m_description.anchorAt256) {
            write(kAnchorSector);
        }
        if (m_description.anchorAtEnd) {
            write(m_description.lastSector);
        }
        if (m_description.anchor256BeforeEnd) {
            write(m_description.lastSector - 256);
        }
    }

    void LongAllocation(std::size_t at, std::size_t length, std::uint32_t block) {
        Write32(*m_image, at, static_cast<std::uint32_t>(length));
        Write32(*m_image, at + 4, block);
    }

    /// ECMA-167 4/14.1
    void WriteFileSet() {
        LongAllocation(AtBlock(0) + 400, kSector, m_root.entryBlock);
        WriteText(*m_image, AtBlock(0) + 417, "*OSTA UDF Compliant");
        WriteUdfTag(*m_image, AtBlock(0), 256, 512, 0);
        WriteUdfTag(*m_image, AtBlock(1), 8, 512, 1);
    }

    void WriteNode(const SNode& node) {
        if (SharesEntry(node)) {
            return;
        }
        if (node.file != nullptr) {
            WriteFile(node);
            return;
        }
        const std::size_t size = node.FolderSize();
        if (m_description.folderAllocation == EUdfAllocation::Embedded) {
            WriteEntry(node, size, size, [&](std::size_t at) { WriteRecords(node, at, node.entryBlock, false); });
            return;
        }
        WriteRecords(node, AtBlock(node.contentBlock), node.contentBlock, true);
        const SUdfFileDescription folder = {
            node.name,
            {{m_description.start + node.contentBlock, static_cast<std::uint32_t>(size)}},
            m_description.folderAllocation};
        WriteEntry(node, size, DescriptorSize(folder), [&](std::size_t at) { WriteDescriptor(folder, 0, at); });
    }

    /// File identifier descriptors (ECMA-167 4/14.4), the parent's first.
    void WriteRecords(const SNode& node, std::size_t at, std::uint32_t block, bool countsBlocks) {
        const std::size_t start = at;
        const auto record = [&](const std::string& name, std::uint8_t characteristics, const SNode& target) {
            Bytes& image = *m_image;
            Write16(image, at + 16, 1);
            image.at(at + 18) = characteristics;
            LongAllocation(at + 20, kSector, target.entryBlock);
            const Bytes recorded = name.empty() ? Bytes() : OstaName(name);
            image.at(at + 19) = static_cast<std::uint8_t>(recorded.size());
            std::copy(recorded.begin(), recorded.end(), image.begin() + static_cast<std::ptrdiff_t>(at + 38));
            const auto offset = static_cast<std::uint32_t>((at - start) / kSector);
            WriteUdfTag(image, at, 257, SNode::RecordSize(name), block + (countsBlocks ? offset : 0));
            at += SNode::RecordSize(name);
        };
        record("", 2 | 8, node.parent == nullptr ? node : *node.parent);
        for (const auto& child : node.children) {
            record(child->name, child->file == nullptr ? 2 : 0, *child);
        }
    }

    static std::size_t DescriptorSize(const SUdfFileDescription& file) {
        return file.allocation == EUdfAllocation::Long ? 16 : 8;
    }

    void WriteDescriptor(const SUdfFileDescription& file, std::size_t index, std::size_t at) {
        const SUdfExtent& extent = file.extents[index];
        LongAllocation(at, extent.bytes, extent.sector - m_description.start);  // a short one begins alike
    }

    void WriteFile(const SNode& node) {
        const SUdfFileDescription& file = *node.file;
        if (file.allocation == EUdfAllocation::Embedded) {
            WriteEntry(node, file.embedded.size(), file.embedded.size(), [&](std::size_t at) {
                std::copy(file.embedded.begin(), file.embedded.end(),
                          m_image->begin() + static_cast<std::ptrdiff_t>(at));
            });
            return;
        }
        std::size_t size = 0;
        for (const SUdfExtent& extent : file.extents) {
            size += extent.bytes;
        }
        const std::size_t perBlock = node.continuations.empty() ? file.extents.size() : file.descriptorsPerBlock;
        const std::size_t here = (perBlock + (node.continuations.empty() ? 0 : 1)) * DescriptorSize(file);
        WriteEntry(node, size, here, [&](std::size_t at) { WriteDescriptors(node, 0, perBlock, 0, at); });
        for (std::size_t i = 0; i < node.continuations.size(); ++i) {
            const std::size_t first = perBlock * (i + 1);
            const std::size_t count = std::min(perBlock, file.extents.size() - first);
            const std::size_t at = AtBlock(node.continuations[i]);
            const bool isLast = i + 1 == node.continuations.size();
            const std::size_t length = (count + (isLast ? 0 : 1)) * DescriptorSize(file);
            WriteDescriptors(node, first, count, i + 1, at + 24);
            Write32(*m_image, at + 20, static_cast<std::uint32_t>(length));
            WriteUdfTag(*m_image, at, 258, 24 + length, node.continuations[i]);
        }
    }

    /// `count` allocation descriptors from `first` on, and one that names continuation `next` if that exists.
    void WriteDescriptors(const SNode& node, std::size_t first, std::size_t count, std::size_t next, std::size_t at) {
        for (std::size_t i = first; i < first + count; ++i) {
            WriteDescriptor(*node.file, i, at);
            at += DescriptorSize(*node.file);
        }
        if (next < node.continuations.size()) {
            LongAllocation(at, 3U << 30U | kSector, node.continuations[next]);
        }
    }

    /// ECMA-167 4/14.9 and 4/14.17; `writeTail(position)` writes the allocation descriptors or the embedded content.
    template <typename TWriteTail>
    void WriteEntry(const SNode& node, std::size_t size, std::size_t tailLength, TWriteTail writeTail) {
        Bytes& image = *m_image;
        const std::size_t at = AtBlock(node.entryBlock);
        const bool isExtended = node.file != nullptr && node.file->isExtended;
        const EUdfAllocation allocation = node.file == nullptr ? m_description.folderAllocation : node.file->allocation;
        const std::size_t tail = isExtended ? 216 : 176;
        Write16(image, at + 20, 4);
        Write16(image, at + 24, 1);
        image.at(at + 27) = node.file == nullptr ? 4 : 5;
        image.at(at + 34) = static_cast<std::uint8_t>(allocation);
        Write16(image, at + 48, 1);
        Write64(image, at + 56, size);
        const std::size_t blocks = allocation == EUdfAllocation::Embedded ? 0 : (size + kSector - 1) / kSector;
        Write64(image, at + (isExtended ? 72 : 64), blocks);
        if (isExtended) {
            Write64(image, at + 64, size);
        }
        Write64(image, at + tail - 16, 16 + node.entryBlock);
        Write32(image, at + tail - 4, static_cast<std::uint32_t>(tailLength));
        writeTail(at + tail);
        WriteUdfTag(image, at, isExtended ? 266 : 261, tail + tailLength, node.entryBlock);
    }

    const SUdfDescription& m_description;
    SNode m_root;
    std::vector<SNode*> m_nodes;  ///< folders before their contents
    std::uint32_t m_end = 0;      ///< block
    Bytes* m_image = nullptr;
};

}  // namespace

std::uint32_t EndOfUdf(const SUdfDescription& description) {
    return CUdfBuilder(description).End();
}

SBuiltUdf WriteUdfVolume(Bytes& image, const SUdfDescription& description) {
    return CUdfBuilder(description).Write(image);
}

void WriteUdfTag(Bytes& image, std::size_t position, std::uint16_t identifier, std::size_t length,
                 std::uint32_t location) {
    Write16(image, position, identifier);
    Write16(image, position + 2, 2);
    Write16(image, position + 8, CrcOf(&image.at(position + 16), length - 16));
    Write16(image, position + 10, length - 16);
    Write32(image, position + 12, location);
    std::uint8_t sum = 0;
    image.at(position + 4) = 0;
    for (std::size_t i = 0; i < 16; ++i) {
        sum = static_cast<std::uint8_t>(sum + image.at(position + i));
    }
    image.at(position + 4) = sum;
}

}  // namespace vantrel::test
