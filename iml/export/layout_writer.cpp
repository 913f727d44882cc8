#include "iml/export/layout_writer.h"

#include <algorithm>
#include <array>

#include "files/byte_order.h"
#include "files/commit_together.h"
#include "files/input_file.h"
#include "files/path.h"
#include "files/text_output.h"
#include "iml/file_list.h"
#include "iml/layout/sector_range.h"
#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// What differs between the media. An unknown one has no lines of its own; a rebuild refuses such a layout.
struct SVariant {
    const char* mediaLines;
    const char* typeLines;
    const char* trackTable;
    const char* columnHeader;
    const char* mode;
    std::int32_t leadingSectorsNotListed;  ///< Sectors of the ".ims" file behind the last leading one, plus one.
    bool hasTrailingEntry;
};

constexpr const char* kTrackTable =
    "#Track   Index   Time        Form        Control        LBN\n"
    " 00      00      00:00:00    CDROM2_0    DATA\n"
    " 01      00      00:00:00    CDROM2_0    DATA\n"
    " 01      00      00:00:00    CDROM2_0    DATA           0\n"
    " AA      01      00:00:00    CDROM2_0    DATA           0\n";

constexpr const char* kDvdColumns = "#Start   End      Mode Fno Source\n";
constexpr const char* kCdColumns = "#Start   End      Mode Fno Path\n";

constexpr SVariant kDvd = {"MEDIA=DVD\nTARGET=PS2\n", "PSTYPE=2\nDISCCODE=01\n", "", kDvdColumns, "0.0", 2, true};
constexpr SVariant kCd = {
    "MEDIA=CD\nTARGET=PS2\n", "PSTYPE=2\nDISCCODE=01\n", kTrackTable, kCdColumns, "2.1", 1, false};
constexpr SVariant kUmd = {
    "MEDIA=UMD\nTARGET=PSP\n", "PSTYPE=PSP\nDISCCODE=00\n", kTrackTable, kCdColumns, "2.1", 1, false};
constexpr SVariant kUnknown = {"", "", "", "", "2.1", 1, false};

const SVariant& VariantOf(EMedia media) {
    switch (media) {
        case EMedia::Dvd:
            return kDvd;
        case EMedia::Cd:
            return kCd;
        case EMedia::Umd:
            return kUmd;
        case EMedia::Unknown:
            break;
    }
    return kUnknown;
}

/// The columns of an entry up to the opening quote.
std::string EntryColumns(std::uint32_t first, std::uint32_t last, const char* mode) {
    return Format("%-8d %-8d %s  0   ", static_cast<std::int32_t>(first), static_cast<std::int32_t>(last), mode);
}

std::string Quoted(const std::string& text) {
    return '"' + text + '"';
}

class CLayoutWriter {
public:
    CLayoutWriter(const SLayoutRequest& request, const SWalkRequest& sideFiles, const SWalkedImage& image,
                  COperation& operation)
        : m_request(request),
          m_sideFiles(sideFiles),
          m_image(image),
          m_variant(VariantOf(MediaOf(image.mediaKey))),
          m_operation(operation),
          m_leadingPath(LeadingPathOf(request.layoutPath)) {}

    void Write();

private:
    void OpenList();
    void WriteLeadingStructures();
    std::int64_t HeaderSectors();
    void CopyHeader();
    void WriteTrailingSector();
    void TakeLeadingLength();
    std::int32_t CountEntries();
    void WriteLayout();
    void WriteHead(CTextOutput& text, std::int32_t entries);
    void WriteEntries(CTextOutput& text, std::int32_t entries);
    void ShowEntryDone(std::int32_t done, std::int32_t entries);
    void Commit();
    void Finish();
    void Close(COutputFile& output);
    void CheckReading(const CInputFile& file, const std::string& path);

    [[noreturn]] void FailWith(const char* pattern, const std::string& path) {
        m_operation.Fail(Format(pattern, path.c_str()));
    }
    bool IsInPlace() const { return m_request.manner == EOutputManner::InPlace; }
    /// The volume's last sector, where a DVD's trailing sector belongs.
    std::uint32_t LastVolumeSector() const { return m_image.volumeSectors - 1; }

    const SLayoutRequest& m_request;
    const SWalkRequest& m_sideFiles;
    const SWalkedImage& m_image;
    const SVariant& m_variant;
    COperation& m_operation;
    std::string m_leadingPath;
    CInputFile m_list;
    COutputFile m_leading;
    COutputFile m_layout;
    std::int64_t m_leadingLength = 0;
};

void CLayoutWriter::Write() {
    OpenList();
    WriteLeadingStructures();
    TakeLeadingLength();
    WriteLayout();
    Commit();
    Finish();
}

void CLayoutWriter::OpenList() {
    if (!m_list.Open(m_sideFiles.fileListPath)) {
        FailWith("Code 4100 - Error Opening %s", m_sideFiles.fileListPath);
    }
}

void CLayoutWriter::WriteLeadingStructures() {
    if (!m_leading.Open(m_leadingPath, m_request.manner)) {
        FailWith("Code 4101 - Error Opening %s", m_leadingPath);
    }
    CopyHeader();
    if (m_variant.hasTrailingEntry) {
        WriteTrailingSector();
    }
    Close(m_leading);
}

std::int64_t CLayoutWriter::HeaderSectors() {
    CInputFile offsets;
    if (!offsets.Open(m_sideFiles.offsetListPath)) {
        FailWith("Code 4103 - Error Opening %s", m_sideFiles.offsetListPath);
    }
    std::array<std::uint8_t, 4> word = {};
    offsets.Read(word);
    CheckReading(offsets, m_sideFiles.offsetListPath);
    return LoadLe32(word);
}

void CLayoutWriter::CopyHeader() {
    const std::int64_t sectors = HeaderSectors();
    CInputFile header;
    if (!header.Open(m_sideFiles.headerCopyPath)) {
        FailWith("Code 4101a - Error Opening %s", m_sideFiles.headerCopyPath);
    }
    const std::int64_t there = std::min(sectors, SectorsFor(header.Size()));
    for (std::int64_t sector = 0; sector < there; ++sector) {
        std::array<std::uint8_t, kSectorSize> bytes = {};
        header.Read(bytes);
        m_leading.Write(bytes);
        m_operation.PumpMessages();
    }
    CheckReading(header, m_sideFiles.headerCopyPath);
}

/// The sector that closes a DVD: the head of its descriptor tag and its own number (ECMA-167 3/7.2.8).
void CLayoutWriter::WriteTrailingSector() {
    std::array<std::uint8_t, kSectorSize> bytes = {};
    std::copy(m_image.anchorTag.begin(), m_image.anchorTag.end(), bytes.begin());
    const auto number = Le32(LastVolumeSector());
    std::copy(number.begin(), number.end(), bytes.begin() + kTagHeadSize);
    m_leading.Write(bytes);
}

void CLayoutWriter::TakeLeadingLength() {
    m_leadingLength = m_leading.Size();
    if (!IsInPlace()) {
        return;  // it has no name of its own yet
    }
    CInputFile leading;
    if (!leading.Open(m_leadingPath)) {
        FailWith("Code 4102 - Error Opening %s", m_leadingPath);
    }
    m_leadingLength = leading.Size();
    CheckReading(leading, m_leadingPath);
}

std::int32_t CLayoutWriter::CountEntries() {
    std::int32_t count = m_variant.hasTrailingEntry ? 2 : 1;
    CFileListReader reader(m_list);
    for (SFileListLine line; reader.Next(line);) {
        count += line.NamesFile() ? 1 : 0;
    }
    return count;
}

void CLayoutWriter::WriteLayout() {
    if (!m_layout.Open(m_request.layoutPath, m_request.manner)) {
        FailWith("Code 4104 - Error Opening %s", m_request.layoutPath);
    }
    const std::int32_t entries = CountEntries();
    CTextOutput text(m_layout);
    WriteHead(text, entries);
    WriteEntries(text, entries);
    text.Write("[/LOC]\n\n");
    text.Flush();
    CheckReading(m_list, m_sideFiles.fileListPath);
    Close(m_layout);
}

void CLayoutWriter::WriteHead(CTextOutput& text, std::int32_t entries) {
    const SLocalTime now = m_request.clock();
    const std::string noName = Quoted(std::string(32, ' '));
    text.Write("[SYS]\nVERSION=1.00\n");
    text.Write(m_variant.mediaLines);
    text.Write("DISCVERSION=1.00\nDATE=" + DateText(now) + '-' + TimeText(now) + "\n[/SYS]\n\n");
    text.Write("[CUE]\nDISCNAME=" + noName + "\nPRODUCER=" + noName + "\nCOPYRIGHT=" + noName + '\n');
    text.Write("CREATIONDATE=" + PlainDateText(now) + '\n');
    text.Write(m_variant.typeLines);
    text.Write(m_variant.trackTable);
    text.Write("[/CUE]\n\n[LOC]\n");
    text.Write(Format("# the number of entries: %d\n", entries));
    text.Write(m_variant.columnHeader);
}

void CLayoutWriter::WriteEntries(CTextOutput& text, std::int32_t entries) {
    m_operation.StartProgress(entries, EProgressFill::Dvd);
    const std::string leadingName = Quoted(FileNameOf(m_leadingPath));
    const std::int64_t leadingEnd = m_leadingLength / kSectorSize - m_variant.leadingSectorsNotListed;
    text.Write(EntryColumns(0, static_cast<std::uint32_t>(leadingEnd), m_variant.mode) + leadingName + '\n');
    std::int32_t done = 1;
    ShowEntryDone(done, entries);
    const std::string folder = LayoutFolderOf(m_request.folderText);
    CRangeRule rule;
    CFileListReader reader(m_list);
    for (SFileListLine line; reader.Next(line);) {
        if (!line.NamesFile()) {
            continue;
        }
        const SSectorRange range = rule.Next(line.start, line.size);
        text.Write(EntryColumns(range.first, range.last, m_variant.mode) + Quoted(folder + line.path) + '\n');
        ShowEntryDone(++done, entries);
    }
    if (m_variant.hasTrailingEntry) {
        const auto position = static_cast<std::int32_t>((leadingEnd + 1) * kSectorSize);
        text.Write(EntryColumns(LastVolumeSector(), LastVolumeSector(), m_variant.mode) + leadingName +
                   Format(" %d\n", position));
        ShowEntryDone(++done, entries);
    }
}

void CLayoutWriter::ShowEntryDone(std::int32_t done, std::int32_t entries) {
    m_operation.SetPane(EPane::Percent, PercentText(PercentOf(done, entries)));
    m_operation.StepProgress();
    m_operation.PumpMessages();
}

void CLayoutWriter::Close(COutputFile& output) {
    if (!output.Finish()) {
        m_operation.Fail(output.FailureText());
    }
}

void CLayoutWriter::CheckReading(const CInputFile& file, const std::string& path) {
    if (file.HasFailed()) {
        FailWith("Cannot read %s in full", path);
    }
}

void CLayoutWriter::Commit() {
    m_list.Close();
    std::string failure;
    const std::array<COutputFile*, 2> outputs = {&m_leading, &m_layout};
    if (!CommitTogether(outputs, failure)) {
        m_operation.Fail(failure);
    }
}

void CLayoutWriter::Finish() {
    RemoveFile(m_sideFiles.headerCopyPath);
    RemoveFile(m_sideFiles.pathTableCopyPath);
    m_operation.SetPane(EPane::Percent, PercentText(100));
    m_operation.SetPane(EPane::File, m_request.layoutPath);
    m_operation.SetPane(EPane::Status, "Export iml done!");
    m_operation.Complete("Export iml done!");
}

}  // namespace

std::string LeadingPathOf(const std::string& layoutPath) {
    const SPathParts parts = SplitPath(layoutPath);
    return parts.drive + parts.folder + parts.name + ".ims";
}

std::string LayoutFolderOf(const std::string& folderText) {
    const bool hasDrive = folderText.size() > 1 && folderText[1] == ':';
    const std::size_t begin = hasDrive ? 2 : 0;
    const std::size_t separator = folderText.find_last_of("\\/");
    return separator == std::string::npos || separator < begin ? std::string()
                                                               : folderText.substr(begin, separator + 1 - begin);
}

void WriteImlLayout(const SLayoutRequest& request, const SWalkRequest& sideFiles, const SWalkedImage& image,
                    COperation& operation) {
    CLayoutWriter(request, sideFiles, image, operation).Write();
}

}  // namespace vantrel
