#include "iml/export/tree_walk.h"

#include <algorithm>
#include <array>
#include <set>
#include <span>
#include <vector>

#include "iso/contents.h"
#include "iso/path_table.h"
#include "iso/volume.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr char kSeparator = '\\';

/// Names in a notice; further ones are counted.
constexpr std::size_t kMostNames = 10;

/// "A, B and 3 more"
std::string NamesOf(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < std::min(names.size(), kMostNames); ++i) {
        text += (text.empty() ? "" : ", ") + names[i];
    }
    return names.size() > kMostNames ? text + Format(" and %zu more", names.size() - kMostNames) : text;
}

/// Why a layout cannot list a file, or empty.
std::string UnlistedBecause(const SContentFile& file) {
    if (file.path.empty() || file.path.ends_with('\\')) {
        return "without a name";
    }
    if ((file.flags & kFileFlagAssociated) != 0) {
        return "associated";
    }
    return file.IsContiguous() ? "" : "in separate extents";
}

std::string Named(const std::string& path, const std::string& property) {
    return Format("%s (%s)", path.c_str(), property.c_str());
}

/// A property of a listed file that a layout does not record, or empty.
std::string UnrecordedProperty(const SContentFile& file) {
    if (file.extents.size() > 1) {
        return "several extents";
    }
    if ((file.flags & kFileFlagHidden) != 0) {
        return "hidden";
    }
    return (file.flags & kFileFlagProtected) != 0 ? "protected" : "";
}

/// A structure that an image needs beside its directories.
struct SStructure {
    std::string name;
    std::int64_t sector;
    std::int64_t end;
};

class CTreeWalk {
public:
    CTreeWalk(CByteSource& image, const std::string& imagePath, COperation& operation)
        : m_image(image),
          m_imagePath(imagePath),
          m_operation(operation),
          m_volume(ReadPrimaryVolume(image)),
          m_contents(ReadTree(image, m_volume.rootRecord.extentLocation.Value(), kSeparator,
                              [&operation] { operation.Yield(); })) {}

    STreeWalk Run() {
        CheckFolders();
        ComparePathTable();
        ListFiles();
        AddPathTables("path table", m_volume);
        AddSupplementaryVolumes();
        AddUdfVolume();
        TakeInStructures();
        return std::move(m_walk);
    }

private:
    void CheckFolders() {
        const std::int64_t imageSectors = SectorsFor(m_image.Size());
        if (m_contents.folders.front().sectors == 0) {
            m_operation.Fail(Format("Code 9999 - invalid file header %s", m_imagePath.c_str()));
        }
        for (const SContentFolder& folder : m_contents.folders) {
            if (folder.sector >= imageSectors) {
                m_operation.Fail(Format("%s ends at sector %lld, before its directory at sector %u",
                                        m_imagePath.c_str(), static_cast<long long>(imageSectors), folder.sector));
            }
            if (!folder.inside) {
                m_operation.Fail(Format("%s ends at sector %lld, within its directory at sector %u",
                                        m_imagePath.c_str(), static_cast<long long>(imageSectors), folder.sector));
            }
            m_walk.headerSectors = std::max(m_walk.headerSectors, folder.sector + folder.sectors);
        }
    }

    /// The type L table, as long as the volume descriptor says.
    void ComparePathTable() {
        CPathTable table;
        table.Read(m_image, LoadLe32(m_volume.pathTableLocation) * kSectorSize, m_volume.pathTableSize.Value(),
                   [this] { m_operation.Yield(); });
        std::set<std::uint32_t> inTable;
        for (std::size_t i = 0; i < table.Count(); ++i) {
            inTable.insert(table.Extent(i));
        }
        const auto named = std::count_if(m_contents.folders.begin(), m_contents.folders.end(),
                                         [&](const SContentFolder& folder) { return inTable.contains(folder.sector); });
        const std::size_t folders = m_contents.folders.size();
        if (static_cast<std::size_t>(named) != folders || inTable.size() != folders) {
            m_walk.notices.push_back(
                Format("The path table of %s disagrees with its directories: it names %d of %d directories, and %d "
                       "others; the "
                       "layout follows the directories",
                       m_imagePath.c_str(), static_cast<int>(named), static_cast<int>(folders),
                       static_cast<int>(inTable.size()) - static_cast<int>(named)));
        }
    }

    void ListFiles() {
        std::vector<std::string> unlisted;
        std::vector<std::string> special;
        for (const SContentFile& file : m_contents.files) {
            const std::string path = LineName(file.path);
            if (const std::string reason = UnlistedBecause(file); !reason.empty()) {
                unlisted.push_back(Named(path, reason));
                continue;
            }
            if (const std::string property = UnrecordedProperty(file); !property.empty()) {
                special.push_back(Named(path, property));
            }
            m_walk.files.push_back({file.Sector(), file.Size(), path, file.date});
        }
        if (!unlisted.empty()) {
            m_walk.notices.push_back(Format("%d files are not in the layout, which cannot represent them: %s",
                                            static_cast<int>(unlisted.size()), NamesOf(unlisted).c_str()));
        }
        if (!special.empty()) {
            m_walk.notices.push_back(
                Format("%d files have properties that the layout does not record; the leading structures keep them: %s",
                       static_cast<int>(special.size()), NamesOf(special).c_str()));
        }
    }

    void AddStructure(const std::string& name, std::uint32_t sector, std::int64_t sectors) {
        if (sector != 0) {
            m_structures.push_back({name, sector, sector + sectors});
        }
    }

    void AddPathTables(const std::string& name, const SPrimaryVolumeDescriptor& volume) {
        const std::int64_t sectors = SectorsFor(volume.pathTableSize.Value());
        AddStructure(name, LoadLe32(volume.pathTableLocation), sectors);
        AddStructure(name, LoadLe32(volume.optionalPathTableLocation), sectors);
        AddStructure(name, LoadBe32(volume.pathTableLocationM), sectors);
        AddStructure(name, LoadBe32(volume.optionalPathTableLocationM), sectors);
    }

    /// The trees of the supplementary and enhanced volumes, for example Joliet's.
    void AddSupplementaryVolumes() {
        const std::vector<SVolumeDescriptorAt> volumes = ReadVolumeDescriptors(m_image);
        for (const SVolumeDescriptorAt& found : std::span(volumes).subspan(1)) {
            const SPrimaryVolumeDescriptor& volume = found.descriptor;
            if (volume.type == kSupplementaryVolume) {
                AddPathTables("supplementary path table", volume);
                for (const SContentFolder& folder :
                     ReadTree(m_image, volume.rootRecord.extentLocation.Value(), kSeparator, [] {}).folders) {
                    AddStructure("supplementary directory", folder.sector, folder.sectors);
                }
            }
        }
    }

    /// The two volume descriptor sequences that the first anchor names (ECMA-167 3/10.2).
    void AddUdfVolume() {
        std::array<std::uint8_t, 32> anchor = {};
        m_image.ReadAt(kAnchorSector * kSectorSize, anchor);
        const std::span bytes(anchor);
        if (LoadLe16(bytes.first<2>()) != kTagAnchor) {
            return;
        }
        AddStructure("UDF anchor", static_cast<std::uint32_t>(kAnchorSector), 1);
        AddStructure("UDF descriptors", LoadLe32(bytes.subspan<20, 4>()), SectorsFor(LoadLe32(bytes.subspan<16, 4>())));
        AddStructure("UDF descriptors", LoadLe32(bytes.subspan<28, 4>()), SectorsFor(LoadLe32(bytes.subspan<24, 4>())));
    }

    /// First sector of a file with content behind the leading structures.
    std::int64_t FirstFileSector() const {
        std::int64_t first = SectorsFor(m_image.Size());
        for (const SWalkedFile& file : m_walk.files) {
            if (file.size > 0 && file.start >= m_walk.headerSectors) {
                first = std::min<std::int64_t>(first, file.start);
            }
        }
        return first;
    }

    /// Extends the leading structures by those that precede the files, and reports the others.
    void TakeInStructures() {
        const std::int64_t firstFile = FirstFileSector();
        std::set<std::string> outside;
        for (const SStructure& structure : m_structures) {
            if (structure.end <= firstFile) {
                m_walk.headerSectors = std::max(m_walk.headerSectors, static_cast<std::uint32_t>(structure.end));
            } else if (structure.end > m_walk.headerSectors) {
                outside.insert(
                    Format("%s at sector %lld", structure.name.c_str(), static_cast<long long>(structure.sector)));
            }
        }
        if (!outside.empty()) {
            m_walk.notices.push_back(
                Format("The leading structures do not include everything that %s needs; only the gap file of an export "
                       "with files keeps it: %s",
                       m_imagePath.c_str(), NamesOf({outside.begin(), outside.end()}).c_str()));
        }
    }

    CByteSource& m_image;
    const std::string& m_imagePath;
    COperation& m_operation;
    SPrimaryVolumeDescriptor m_volume;
    SContents m_contents;
    std::vector<SStructure> m_structures;
    STreeWalk m_walk;
};

}  // namespace

STreeWalk WalkTree(CByteSource& image, const std::string& imagePath, COperation& operation) {
    return CTreeWalk(image, imagePath, operation).Run();
}

}  // namespace vantrel
