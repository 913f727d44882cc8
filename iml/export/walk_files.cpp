#include "iml/export/walk_files.h"

#include <algorithm>
#include <array>
#include <vector>

#include "files/byte_order.h"
#include "files/text_output.h"
#include "operation/text.h"

namespace vantrel {

namespace {

using Sector = std::array<std::uint8_t, kSectorSize>;

Sector ReadSector(CByteSource& image, std::int64_t number) {
    Sector sector = {};
    image.ReadAt(number * kSectorSize, sector);
    return sector;
}

void Append(std::vector<std::uint8_t>& bytes, std::uint32_t value) {
    const auto added = Le32(value);
    bytes.insert(bytes.end(), added.begin(), added.end());
}

}  // namespace

SWalkFilePaths WindowWalkFiles(const std::string& folder, const std::string& fileName) {
    return {folder + "temp1.tmp", folder + fileName + "-LBA.TXT", folder + "tmp.tmp", folder + fileName + ".vlt"};
}

CWalkFiles::CWalkFiles(const SWalkFilePaths& paths, COperation& operation)
    : m_paths(paths),
      m_operation(operation),
      m_headerCopy(operation),
      m_fileList(operation),
      m_pathTableCopy(operation),
      m_offsetList(operation) {}

void CWalkFiles::Create() {
    m_headerCopy.OpenOrFail(m_paths.headerCopy, EOutputManner::InPlace, "Code 1101a - Error Opening %s");
    m_fileList.OpenOrFail(m_paths.fileList, EOutputManner::InPlace, "Code 1101b - Error Opening %s");
    m_pathTableCopy.OpenOrFail(m_paths.pathTableCopy, EOutputManner::InPlace, "Code 1101c - Error Opening %s");
    m_offsetList.OpenOrFail(m_paths.offsetList, EOutputManner::InPlace, "Code 1104- Error Opening %s");
}

void CWalkFiles::CopyPathTable(CByteSource& image, std::int64_t first, std::int64_t count) {
    CopySectors(image, first, count, m_pathTableCopy);
    m_pathTableCopy.FinishOrFail();
    Reopen(m_paths.pathTableCopy, "Code 1101d - Error Opening %s");
}

void CWalkFiles::CopyHeader(CByteSource& image, std::uint32_t sectors) {
    CopySectors(image, 0, sectors, m_headerCopy);
    m_headerCopy.FinishOrFail();
    Reopen(m_paths.headerCopy, "Code 1101e - Error Opening %s");
}

void CWalkFiles::WriteLists(std::span<const SWalkedFile> files) {
    CTextOutput list(m_fileList);
    std::vector<std::uint8_t> offsets;
    Append(offsets, 0);  // the header length, which is known last
    for (const SWalkedFile& file : files) {
        list.Write(Format("%08X|%08X|%08X|\\%s\n", file.start, static_cast<std::uint32_t>(file.size), file.Sectors(),
                          file.path.c_str()));
        Append(offsets, file.start);
        Append(offsets, file.Last());
    }
    list.Flush();
    m_offsetList.Write(offsets);
    m_fileList.FinishOrFail();
}

void CWalkFiles::ExtendHeader(CByteSource& image, std::uint32_t first, std::uint32_t end) {
    CCheckedUpdate copy(m_operation);
    copy.OpenOrFail(m_paths.headerCopy, EUpdateManner::InPlace, "Code 1101e - Error Opening %s");
    copy.SeekOrFail(first * kSectorSize);
    for (std::uint32_t sector = first; sector < end; ++sector) {
        copy.WriteOrFail(ReadSector(image, sector));
    }
    copy.CommitOrFail();
}

void CWalkFiles::WriteHeaderLength(std::uint32_t sectors) {
    m_offsetList.Seek(0);
    m_offsetList.Write(Le32(sectors));
    m_offsetList.FinishOrFail();
}

void CWalkFiles::CopySectors(CByteSource& image, std::int64_t first, std::int64_t count, CCheckedOutput& output) {
    const std::int64_t end = std::min(first + count, SectorsFor(image.Size()));
    for (std::int64_t sector = first; sector < end; ++sector) {
        output.Write(ReadSector(image, sector));
        m_operation.Yield();
    }
}

void CWalkFiles::Reopen(const std::string& path, const char* pattern) {
    CCheckedInput file(m_operation);
    file.OpenOrFail(path, pattern);
}

}  // namespace vantrel
