#include "iml/export/layout_writer.h"

#include <algorithm>
#include <array>

#include "files/byte_order.h"
#include "files/checked_file.h"
#include "files/path.h"
#include "files/text_output.h"
#include "iml/layout/layout_names.h"
#include "iml/layout/sector_range.h"
#include "iso/volume.h"
#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// The lines that depend on the medium. A layout of an unknown medium has none of them; a rebuild refuses it.
struct SVariant {
    const char* mediaLines;
    const char* typeLines;
    const char* trackTable;
    const char* columnHeader;
    const char* mode;
    std::int32_t unlistedSectors;  ///< Length of the ".ims" file in sectors, less the last sector of its entry.
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

const SVariant& VariantOf(ImageKind kind) {
    switch (kind) {
        case ImageKind::Dvd:
            return kDvd;
        case ImageKind::Cd:
            return kCd;
        case ImageKind::Umd:
            return kUmd;
        case ImageKind::Unknown:
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
    CLayoutWriter(const SLayoutRequest& request, const SWalkedImage& image, COperation& operation)
        : m_request(request),
          m_image(image),
          m_variant(VariantOf(KindByApplication(image.mediaId, image.mediaSub))),
          m_operation(operation),
          m_leadingPath(LeadingPathOf(request.layoutPath)),
          m_leading(operation),
          m_layout(operation) {}

    void Write();

private:
    void WriteLeadingStructures();
    void CopyHeader();
    void WriteTrailingSector();
    void WriteLeading(std::span<const std::uint8_t> bytes);
    void WriteLayout();
    std::int32_t CountEntries() const;
    void WriteHead(CTextOutput& text, std::int32_t entries);
    void WriteEntries(CTextOutput& text, std::int32_t entries);
    void Commit();
    void Finish();
    void Reopen(const std::string& path, const char* pattern);

    /// The last sector of the volume, where a DVD's trailing sector belongs.
    std::uint32_t LastVolumeSector() const { return m_image.volumeSectors - 1; }

    const SLayoutRequest& m_request;
    const SWalkedImage& m_image;
    const SVariant& m_variant;
    COperation& m_operation;
    std::string m_leadingPath;
    CCheckedOutput m_leading;
    CCheckedOutput m_layout;
    SChecksum m_leadingSum;
};

void CLayoutWriter::Write() {
    if (m_request.sideFiles) {
        Reopen(m_request.sideFiles->fileList, "Code 4100 - Error Opening %s");
    }
    WriteLeadingStructures();
    WriteLayout();
    Commit();
    Finish();
}

void CLayoutWriter::Reopen(const std::string& path, const char* pattern) {
    CCheckedInput file(m_operation);
    file.OpenOrFail(path, pattern);
}

void CLayoutWriter::WriteLeadingStructures() {
    m_leading.OpenOrFail(m_leadingPath, m_request.manner, "Code 4101 - Error Opening %s");
    if (m_request.sideFiles) {
        Reopen(m_request.sideFiles->offsetList, "Code 4103 - Error Opening %s");
    }
    CopyHeader();
    if (m_variant.hasTrailingEntry) {
        WriteTrailingSector();
    }
    m_leading.FinishOrFail();
    if (m_request.sideFiles) {
        Reopen(m_leadingPath, "Code 4102 - Error Opening %s");
    }
}

void CLayoutWriter::CopyHeader() {
    CCheckedInput source(m_operation);
    source.AttachOrOpen(m_request.leadingImage, m_request.leadingSource, "Code 4101a - Error Opening %s");
    const std::int64_t sectors = std::min<std::int64_t>(m_image.headerSectors, SectorsFor(source.SizeOrFail()));
    for (std::int64_t sector = 0; sector < sectors; ++sector) {
        std::array<std::uint8_t, kSectorSize> bytes = {};
        source.Read(bytes);
        WriteLeading(bytes);
        m_operation.Yield();
    }
    source.FailIfUnread();
}

/// The sector that closes a DVD: the head of its descriptor tag and its own number (ECMA-167 3/7.2.8).
void CLayoutWriter::WriteTrailingSector() {
    std::array<std::uint8_t, kSectorSize> bytes = {};
    std::copy(m_image.anchorTag.begin(), m_image.anchorTag.end(), bytes.begin());
    const auto number = Le32(LastVolumeSector());
    std::copy(number.begin(), number.end(), bytes.begin() + kTagHeadSize);
    WriteLeading(bytes);
}

void CLayoutWriter::WriteLeading(std::span<const std::uint8_t> bytes) {
    m_leading.Write(bytes);
    m_leadingSum.Add(bytes);
}

std::int32_t CLayoutWriter::CountEntries() const {
    const auto named = std::count_if(m_image.files.begin(), m_image.files.end(),
                                     [](const SWalkedFile& file) { return file.IsListed(); });
    return static_cast<std::int32_t>(named) + (m_variant.hasTrailingEntry ? 2 : 1);
}

void CLayoutWriter::WriteLayout() {
    m_layout.OpenOrFail(m_request.layoutPath, m_request.manner, "Code 4104 - Error Opening %s");
    const std::int32_t entries = CountEntries();
    CTextOutput text(m_layout);
    WriteHead(text, entries);
    WriteEntries(text, entries);
    text.Write("[/LOC]\n\n");
    text.Flush();
    m_layout.FinishOrFail();
    m_request.beforeCommit(text.Sum(), m_leadingSum);
}

void CLayoutWriter::WriteHead(CTextOutput& text, std::int32_t entries) {
    const SLayoutTime now = m_request.clock();
    const std::string noName = Quoted(std::string(32, ' '));
    text.Write("[SYS]\nVERSION=1.00\n");
    text.Write(m_variant.mediaLines);
    text.Write("DISCVERSION=1.00\nDATE=" + now.date + '-' + now.time + "\n[/SYS]\n\n");
    text.Write("[CUE]\nDISCNAME=" + noName + "\nPRODUCER=" + noName + "\nCOPYRIGHT=" + noName + '\n');
    text.Write("CREATIONDATE=" + now.plainDate + '\n');
    text.Write(m_variant.typeLines);
    text.Write(m_variant.trackTable);
    text.Write("[/CUE]\n\n[LOC]\n");
    text.Write(Format("# the number of entries: %d\n", entries));
    text.Write(m_variant.columnHeader);
}

void CLayoutWriter::WriteEntries(CTextOutput& text, std::int32_t entries) {
    CProgress progress(m_operation, entries);
    const std::string leadingName = Quoted(FileNameOf(m_leadingPath));
    const std::int64_t leadingLast = m_leading.Size() / kSectorSize - m_variant.unlistedSectors;
    text.Write(EntryColumns(0, static_cast<std::uint32_t>(leadingLast), m_variant.mode) + leadingName + '\n');
    progress.Advance();
    const std::string folder = LayoutFolderOf(m_request.folderText);
    CRangeRule rule;
    for (const SWalkedFile& file : m_image.files) {
        if (!file.IsListed()) {
            continue;
        }
        const SSectorRange range = rule.Next(file.start, file.size);
        text.Write(EntryColumns(range.first, range.last, m_variant.mode) + Quoted(folder + file.path) + '\n');
        progress.Advance();
    }
    if (m_variant.hasTrailingEntry) {
        const auto position = static_cast<std::int32_t>((leadingLast + 1) * kSectorSize);
        text.Write(EntryColumns(LastVolumeSector(), LastVolumeSector(), m_variant.mode) + leadingName +
                   Format(" %d\n", position));
        progress.Advance();
    }
}

void CLayoutWriter::Commit() {
    std::string problem;
    const std::array<COutputFile*, 2> outputs = {&m_leading, &m_layout};
    if (!m_request.commit(outputs, problem)) {
        m_operation.Fail(problem);
    }
}

void CLayoutWriter::Finish() {
    if (m_request.sideFiles) {
        RemoveFile(m_request.sideFiles->headerCopy);
        RemoveFile(m_request.sideFiles->pathTableCopy);
    }
    m_operation.SetPane(EPane::Percent, "100%");
    m_operation.SetPane(EPane::File, m_request.layoutPath);
    m_operation.SetPane(EPane::Status, "Export iml done!");
    m_operation.Complete("Export iml done!");
}

}  // namespace

std::string LayoutFolderOf(const std::string& folderText) {
    const bool hasDrive = folderText.size() > 1 && folderText[1] == ':';
    const std::size_t begin = hasDrive ? 2 : 0;
    const std::size_t separator = folderText.find_last_of("\\/");
    return separator == std::string::npos || separator < begin ? std::string()
                                                               : folderText.substr(begin, separator + 1 - begin);
}

void WriteImlLayout(const SLayoutRequest& request, const SWalkedImage& image, COperation& operation) {
    CLayoutWriter(request, image, operation).Write();
}

}  // namespace vantrel
