#include "iml/export/walker.h"

#include <algorithm>
#include <array>

#include "files/checked_file.h"
#include "files/path.h"
#include "iml/export/tree_walk.h"
#include "iso/directory_reader.h"
#include "iso/path_table.h"
#include "iso/volume.h"
#include "operation/text.h"

namespace vantrel {

namespace {

std::string ListedName(std::string_view recorded) {
    return LineName(std::string(recorded.substr(0, recorded.find(kVersionSeparator))));
}

class CWalk {
public:
    CWalk(const SWalkRequest& request, COperation& operation)
        : m_request(request), m_operation(operation), m_image(operation) {
        if (request.sideFiles) {
            m_sideFiles.emplace(*request.sideFiles, operation);
        }
    }

    SWalkedImage Run();

private:
    void OpenImage();
    void FollowTree();
    void FollowPathTable();
    void ReadPathTable();
    std::int64_t PathTableSectors() const;
    std::uint32_t HighestDirectory(const CDirectoryReader& reader) const;
    void FindHeaderEnd(CDirectoryReader& reader);
    void ListFiles(CDirectoryReader& reader);
    void ListDirectory(CDirectoryReader& reader, std::size_t directory);
    void TakeInUdfEntries();
    std::int64_t FirstFileSector() const;
    [[noreturn]] void FailInvalid() {
        m_operation.Fail(Format("Code 9999 - invalid file header %s", m_request.imagePath.c_str()));
    }

    const SWalkRequest& m_request;
    COperation& m_operation;
    CCheckedInput m_image;
    std::optional<CWalkFiles> m_sideFiles;
    EImageMark m_mark = EImageMark::None;
    SPrimaryVolumeDescriptor m_volume = {};
    std::uint8_t m_mediaId = 0;
    std::uint8_t m_mediaSub = 0;
    std::uint32_t m_volumeSectors = 0;
    CPathTable m_pathTable;
    SWalkedImage m_walked;
};

SWalkedImage CWalk::Run() {
    m_operation.Begin(EConversion::IsoToIml);
    OpenImage();
    if (m_sideFiles) {
        m_sideFiles->Create();
    }
    if (m_request.strict) {
        FollowTree();
    } else {
        FollowPathTable();
    }
    if (m_mark == EImageMark::Dvd) {
        TakeInUdfEntries();
        m_walked.anchorTag = ReadAnchorTag(m_image, m_volumeSectors);
    }
    if (m_sideFiles) {
        m_sideFiles->WriteHeaderLength(m_walked.headerSectors);
    }
    m_image.FailIfUnread();
    m_walked.mediaId = m_mediaId;
    m_walked.mediaSub = m_mediaSub;
    m_walked.volumeSectors = m_volumeSectors;
    return std::move(m_walked);
}

void CWalk::OpenImage() {
    if (m_request.image != nullptr) {
        m_image.Attach(*m_request.image, m_request.imagePath);
    } else {
        m_image.OpenOrFail(ResolveFileCase(m_request.imagePath), "Code 101e - Error Opening %s", m_request.imagePath);
    }
    m_operation.SetPane(EPane::File, m_request.imagePath);
    m_mark = ReadImageMark(m_image);
    if (m_mark == EImageMark::None) {
        FailInvalid();
    }
    m_volume = ReadPrimaryVolume(m_image);
    m_mediaId = m_volume.applicationIdentifier[1];
    m_mediaSub = m_volume.applicationUse[kXaMarkInApplicationUse];
    m_volumeSectors = m_volume.volumeSpaceSize.Value();
}

void CWalk::FollowTree() {
    STreeWalk walk = WalkTree(m_image, m_request.imagePath, m_operation);
    m_walked.headerSectors = walk.headerSectors;
    m_walked.files = std::move(walk.files);
    m_walked.notices = std::move(walk.notices);
}

void CWalk::FollowPathTable() {
    ReadPathTable();
    CDirectoryReader reader(m_image);
    FindHeaderEnd(reader);
    m_sideFiles->CopyHeader(m_image, m_walked.headerSectors);
    ListFiles(reader);
    m_sideFiles->WriteLists(m_walked.files);
}

/// The table extends to its optional copy. Common mastering tools write no copy; then the recorded size counts.
std::int64_t CWalk::PathTableSectors() const {
    const std::int64_t start = LoadLe32(m_volume.pathTableLocation);
    const std::int64_t optional = LoadLe32(m_volume.optionalPathTableLocation);
    return optional > start ? optional - start : SectorsFor(m_volume.pathTableSize.Value());
}

void CWalk::ReadPathTable() {
    const std::int64_t first = LoadLe32(m_volume.pathTableLocation);
    const std::int64_t count = PathTableSectors();
    m_sideFiles->CopyPathTable(m_image, first, count);
    m_pathTable.Read(m_image, first * kSectorSize, count * kSectorSize, [this] { m_operation.Yield(); });
}

/// First sector of the last directory; ignores directories beyond the end of the image. 0 if there is none.
std::uint32_t CWalk::HighestDirectory(const CDirectoryReader& reader) const {
    std::uint32_t highest = 0;
    for (std::size_t i = 0; i < m_pathTable.Count(); ++i) {
        const std::uint32_t extent = m_pathTable.Extent(i);
        highest = reader.HasSector(extent) ? std::max(highest, extent) : highest;
    }
    return highest;
}

/// The last directory ends the leading structures. If the path table names no directory of the image, the root
/// directory of the volume descriptor is used.
void CWalk::FindHeaderEnd(CDirectoryReader& reader) {
    std::uint32_t extent = HighestDirectory(reader);
    if (extent == 0) {
        m_pathTable.ReadRootOnly(m_volume.rootRecord.extentLocation.Value());
        extent = HighestDirectory(reader);
    }
    if (extent == 0) {
        FailInvalid();
    }
    m_walked.headerSectors = extent + reader.SectorsOf(extent);
}

void CWalk::ListFiles(CDirectoryReader& reader) {
    for (std::size_t i = 0; i < m_pathTable.Count(); ++i) {
        ListDirectory(reader, i);
    }
    // Stable: files that share a sector stay in directory order.
    std::stable_sort(m_walked.files.begin(), m_walked.files.end(),
                     [](const SWalkedFile& a, const SWalkedFile& b) { return a.start < b.start; });
}

void CWalk::ListDirectory(CDirectoryReader& reader, std::size_t directory) {
    std::string folder;
    const bool hasPath = m_pathTable.PathOf(directory, kLongestPath, folder);
    const auto list = [&](const SDirectoryEntry& entry) {
        if (entry.record.flags != kFileFlagsPlain) {
            return;
        }
        const std::string path = folder + '\\' + ListedName(entry.name);
        if (!hasPath || path.size() > kLongestPath) {
            FailInvalid();
        }
        m_walked.files.push_back(
            {entry.record.extentLocation.Value(), entry.record.dataLength.Value(), path.substr(1)});
    };
    reader.Visit(m_pathTable.Extent(directory), list, [this] { m_operation.Yield(); });
}

/// First sector behind the directories at which a file starts; 0 if there is none.
std::int64_t CWalk::FirstFileSector() const {
    const auto first = std::find_if(m_walked.files.begin(), m_walked.files.end(),
                                    [this](const SWalkedFile& file) { return file.start >= m_walked.headerSectors; });
    return first == m_walked.files.end() ? 0 : first->start;
}

/// The UDF file entries of a DVD lie between the directories and the files; they extend the leading structures.
void CWalk::TakeInUdfEntries() {
    const std::int64_t end = std::min(FirstFileSector(), SectorsFor(m_image.Size()));
    const std::uint32_t oldEnd = m_walked.headerSectors;
    for (std::int64_t sector = oldEnd; sector < end; ++sector) {
        std::array<std::uint8_t, 4> start = {};
        m_image.ReadAt(sector * kSectorSize, start);
        if (BeginsFileEntry(start)) {
            m_walked.headerSectors = static_cast<std::uint32_t>(sector) + 1;
        }
        m_operation.Yield();
    }
    if (m_sideFiles && m_walked.headerSectors > oldEnd) {
        m_sideFiles->ExtendHeader(m_image, oldEnd, m_walked.headerSectors);
    }
}

}  // namespace

SWalkedImage WalkIsoImage(const SWalkRequest& request, COperation& operation) {
    return CWalk(request, operation).Run();
}

}  // namespace vantrel
