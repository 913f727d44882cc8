#include "iml/export/walker.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "files/input_file.h"
#include "files/output_file.h"
#include "files/path.h"
#include "files/text_output.h"
#include "files/update_file.h"
#include "iso/directory_reader.h"
#include "iso/path_table.h"
#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// A file found in a directory.
struct SFoundFile {
    std::uint32_t start;      ///< sector
    std::uint32_t size;       ///< bytes
    std::uint32_t directory;  ///< index in the path table
    std::string name;         ///< without version
};

std::string ListedName(std::string_view recorded) {
    return PrintableName(std::string(recorded.substr(0, recorded.find(kVersionSeparator))));
}

/// Number of sectors that a file occupies; 0 for an empty one.
std::uint32_t SectorsOf(const SFoundFile& file) {
    return static_cast<std::uint32_t>(SectorsFor(file.size));
}

/// Last sector of a file; an empty one has its start only.
std::uint32_t LastSectorOf(const SFoundFile& file) {
    return file.start + std::max(SectorsOf(file), 1U) - 1;
}

class CWalk {
public:
    CWalk(const SWalkRequest& request, COperation& operation) : m_request(request), m_operation(operation) {}

    SWalkedImage Run();

private:
    void OpenImage();
    void CreateSideFiles();
    void CopyPathTable();
    std::int64_t PathTableSectors() const;
    void ReadPathTable();
    void FindHeaderEnd(CDirectoryReader& reader);
    void CheckDirectories(CDirectoryReader& reader);
    void CopyHeader();
    void CollectFiles(CDirectoryReader& reader);
    void WriteLists();
    void TakeInUdfEntries();
    std::int64_t FirstFileSector() const;
    void WriteHeaderLength();
    void CopySectors(std::int64_t first, std::int64_t count, COutputFile& output);
    void Close(COutputFile& output);
    void CheckReading(const CInputFile& file, const std::string& path);

    [[noreturn]] void FailWith(const char* pattern, const std::string& path) {
        m_operation.Fail(Format(pattern, path.c_str()));
    }

    const SWalkRequest& m_request;
    COperation& m_operation;
    CInputFile m_image;
    EImageMark m_mark = EImageMark::None;
    SPrimaryVolumeDescriptor m_volume = {};
    COutputFile m_headerCopy;
    COutputFile m_fileList;
    COutputFile m_pathTableCopy;
    COutputFile m_offsetList;
    CPathTable m_pathTable;
    std::uint32_t m_headerEnd = 0;
    std::vector<SFoundFile> m_files;
};

SWalkedImage CWalk::Run() {
    DisableCommands(m_operation, {ECommand::IsoToIml, ECommand::Vantrel, ECommand::IsoToBin, ECommand::BinToIso,
                                  ECommand::CheckPostgap, ECommand::IsoToDax, ECommand::DaxToIso, ECommand::IsoToCso,
                                  ECommand::CsoToIso, ECommand::Browse});
    OpenImage();
    CreateSideFiles();
    CopyPathTable();
    ReadPathTable();
    CDirectoryReader reader(m_image);
    FindHeaderEnd(reader);
    CopyHeader();
    CollectFiles(reader);
    WriteLists();
    if (m_mark == EImageMark::Dvd) {
        TakeInUdfEntries();
    }
    WriteHeaderLength();
    SWalkedImage walked = {MediaKeyOf(m_volume), m_volume.volumeSpaceSize.Value(), {}};
    if (m_mark == EImageMark::Dvd) {
        walked.anchorTag = ReadAnchorTag(m_image, walked.volumeSectors);
    }
    CheckReading(m_image, m_request.imagePath);
    return walked;
}

void CWalk::OpenImage() {
    if (!m_image.Open(ResolveFileCase(m_request.imagePath))) {
        FailWith("Code 101e - Error Opening %s", m_request.imagePath);
    }
    m_operation.SetPane(EPane::File, m_request.imagePath);
    m_mark = ReadImageMark(m_image);
    if (m_mark == EImageMark::None) {
        FailWith("Code 9999 - invalid file header %s", m_request.imagePath);
    }
    m_volume = ReadPrimaryVolume(m_image);
}

void CWalk::CreateSideFiles() {
    struct SSideFile {
        COutputFile& file;
        const std::string& path;
        const char* text;
    };
    const SSideFile sideFiles[] = {
        {m_headerCopy, m_request.headerCopyPath, "Code 1101a - Error Opening %s"},
        {m_fileList, m_request.fileListPath, "Code 1101b - Error Opening %s"},
        {m_pathTableCopy, m_request.pathTableCopyPath, "Code 1101c - Error Opening %s"},
        {m_offsetList, m_request.offsetListPath, "Code 1104- Error Opening %s"},
    };
    for (const SSideFile& side : sideFiles) {
        if (!side.file.Open(side.path, EOutputManner::InPlace)) {
            FailWith(side.text, side.path);
        }
    }
}

/// The table is taken to run up to its optional copy. Common mastering tools write no such copy; then the table's own
/// size counts.
std::int64_t CWalk::PathTableSectors() const {
    const std::int64_t start = LoadLe32(m_volume.pathTableLocation);
    const std::int64_t optional = LoadLe32(m_volume.optionalPathTableLocation);
    return optional > start ? optional - start : SectorsFor(m_volume.pathTableSize.Value());
}

void CWalk::CopyPathTable() {
    CopySectors(LoadLe32(m_volume.pathTableLocation), PathTableSectors(), m_pathTableCopy);
    Close(m_pathTableCopy);
}

void CWalk::ReadPathTable() {
    CInputFile copy;
    if (!copy.Open(m_request.pathTableCopyPath)) {
        FailWith("Code 1101d - Error Opening %s", m_request.pathTableCopyPath);
    }
    m_pathTable.Read(copy, [this] { m_operation.PumpMessages(); });
    CheckReading(copy, m_request.pathTableCopyPath);
}

/// The highest directory ends the header. Directories that the image does not hold are not counted; when it holds none
/// of those in the path table, the root that the volume descriptor names has to do.
void CWalk::FindHeaderEnd(CDirectoryReader& reader) {
    const auto highest = [&]() -> std::uint32_t {
        std::uint32_t found = 0;
        for (std::size_t i = 0; i < m_pathTable.Count(); ++i) {
            const std::uint32_t extent = m_pathTable.Extent(i);
            found = reader.HasSector(extent) ? std::max(found, extent) : found;
        }
        return found;
    };
    std::uint32_t extent = highest();
    if (extent == 0) {
        m_pathTable.ReadRootOnly(m_volume.rootRecord.extentLocation.Value());
        extent = highest();
    }
    if (extent == 0) {
        FailWith("Code 9999 - invalid file header %s", m_request.imagePath);
    }
    CheckDirectories(reader);
    m_headerEnd = extent + reader.SectorsOf(extent);
}

void CWalk::CheckDirectories(CDirectoryReader& reader) {
    for (std::size_t i = 0; m_request.strict && i < m_pathTable.Count(); ++i) {
        const std::uint32_t extent = m_pathTable.Extent(i);
        if (!reader.HasSector(extent)) {
            m_operation.Fail(Format("%s ends at sector %u, before its directory at sector %u",
                                    m_request.imagePath.c_str(), reader.ImageSectors(), extent));
        }
        if (!reader.HasDirectory(extent)) {
            m_operation.Fail(Format("%s ends at sector %u, within its directory at sector %u",
                                    m_request.imagePath.c_str(), reader.ImageSectors(), extent));
        }
    }
}

void CWalk::CopyHeader() {
    CopySectors(0, m_headerEnd, m_headerCopy);
    Close(m_headerCopy);
    CInputFile copy;
    if (!copy.Open(m_request.headerCopyPath)) {
        FailWith("Code 1101e - Error Opening %s", m_request.headerCopyPath);
    }
}

void CWalk::CollectFiles(CDirectoryReader& reader) {
    const auto pump = [this] { m_operation.PumpMessages(); };
    for (std::size_t i = 0; i < m_pathTable.Count(); ++i) {
        const auto collect = [&](const SDirectoryEntry& entry) {
            if (entry.record.flags == kFileFlagsPlain) {
                m_files.push_back({entry.record.extentLocation.Value(), entry.record.dataLength.Value(),
                                   static_cast<std::uint32_t>(i), ListedName(entry.name)});
            }
        };
        reader.Visit(m_pathTable.Extent(i), collect, pump);
    }
    // Files that share a sector stay in the order in which the directories name them.
    std::stable_sort(m_files.begin(), m_files.end(),
                     [](const SFoundFile& a, const SFoundFile& b) { return a.start < b.start; });
}

void CWalk::WriteLists() {
    CTextOutput list(m_fileList);
    std::vector<std::uint8_t> offsets(4);  // room for the header length, which is known last
    std::string folder;
    for (const SFoundFile& file : m_files) {
        if (!m_pathTable.PathOf(file.directory, kLongestListedPath - file.name.size() - 1, folder)) {
            FailWith("Code 9999 - invalid file header %s", m_request.imagePath);
        }
        list.Write(Format("%08X|%08X|%08X|", file.start, file.size, SectorsOf(file)) + folder + '\\' + file.name +
                   '\n');
        for (const std::uint32_t value : {file.start, LastSectorOf(file)}) {
            const auto bytes = Le32(value);
            offsets.insert(offsets.end(), bytes.begin(), bytes.end());
        }
    }
    list.Flush();
    m_offsetList.Write(offsets);
    Close(m_fileList);
}

/// Where the files begin: the first sector behind the directories at which one starts.
std::int64_t CWalk::FirstFileSector() const {
    const auto first = std::find_if(m_files.begin(), m_files.end(),
                                    [this](const SFoundFile& file) { return file.start >= m_headerEnd; });
    return first == m_files.end() ? 0 : first->start;
}

/// The UDF side of a DVD keeps its file entries between the directories and the files; the header takes them in.
void CWalk::TakeInUdfEntries() {
    const std::int64_t imageSectors = SectorsFor(m_image.Size());
    const std::int64_t end = std::min(FirstFileSector(), imageSectors);
    std::int64_t newEnd = m_headerEnd;
    for (std::int64_t sector = m_headerEnd; sector < end; ++sector) {
        std::array<std::uint8_t, 4> beginning = {};
        m_image.ReadAt(sector * kSectorSize, beginning);
        newEnd = BeginsFileEntry(beginning) ? sector + 1 : newEnd;
        m_operation.PumpMessages();
    }
    if (newEnd == m_headerEnd) {
        return;
    }
    CUpdateFile copy;
    if (!copy.Open(m_request.headerCopyPath, EUpdateManner::InPlace) || !copy.Seek(m_headerEnd * kSectorSize)) {
        FailWith("Code 1101e - Error Opening %s", m_request.headerCopyPath);
    }
    for (std::int64_t sector = m_headerEnd; sector < newEnd; ++sector) {
        std::array<std::uint8_t, kSectorSize> bytes = {};
        m_image.ReadAt(sector * kSectorSize, bytes);
        copy.Write(bytes);
    }
    if (!copy.Commit()) {
        m_operation.Fail(copy.FailureText());
    }
    m_headerEnd = static_cast<std::uint32_t>(newEnd);
}

void CWalk::WriteHeaderLength() {
    m_offsetList.Seek(0);
    m_offsetList.Write(Le32(m_headerEnd));
    Close(m_offsetList);
}

/// Copies sectors as far as the image reaches; its last one is filled up with zeros.
void CWalk::CopySectors(std::int64_t first, std::int64_t count, COutputFile& output) {
    const std::int64_t end = std::min(first + count, SectorsFor(m_image.Size()));
    for (std::int64_t sector = first; sector < end; ++sector) {
        std::array<std::uint8_t, kSectorSize> bytes = {};
        m_image.ReadAt(sector * kSectorSize, bytes);
        output.Write(bytes);
        m_operation.PumpMessages();
    }
}

void CWalk::Close(COutputFile& output) {
    if (!output.Finish()) {
        m_operation.Fail(output.FailureText());
    }
}

void CWalk::CheckReading(const CInputFile& file, const std::string& path) {
    if (file.HasFailed()) {
        m_operation.Fail("Cannot read " + path + " in full");
    }
}

}  // namespace

SWalkRequest WindowWalk(const std::string& folder, const std::string& fileName) {
    SWalkRequest request;
    request.imagePath = folder + fileName;
    request.headerCopyPath = folder + "temp1.tmp";
    request.fileListPath = folder + fileName + "-LBA.TXT";
    request.pathTableCopyPath = folder + "tmp.tmp";
    request.offsetListPath = folder + fileName + ".vlt";
    return request;
}

SWalkedImage WalkIsoImage(const SWalkRequest& request, COperation& operation) {
    return CWalk(request, operation).Run();
}

}  // namespace vantrel
