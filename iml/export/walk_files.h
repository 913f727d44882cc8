// The four files that the window's export keeps beside the image. They are written only, never read back as data; but
// each is reopened where the export would use it, because the window reports a file that cannot be reopened.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "files/checked_file.h"
#include "iml/export/walked_file.h"
#include "operation/operation.h"

namespace vantrel {

struct SWalkFilePaths {
    /// The leading structures.
    std::string headerCopy;
    /// One line for each file: start sector, size in bytes, number of sectors (8 hexadecimal digits each) and path.
    std::string fileList;
    /// The type L path table.
    std::string pathTableCopy;
    /// 32-bit numbers, little-endian: sectors of the leading structures, then first and last sector of each file.
    std::string offsetList;
};

/// The window's names: "temp1.tmp", "tmp.tmp" and the image's name with "-LBA.TXT" and ".vlt", all in `folder`, which
/// ends in its separator.
SWalkFilePaths WindowWalkFiles(const std::string& folder, const std::string& fileName);

/// Writes the files, step by step in the order of the members. Copies stop where the image ends and pad its last sector
/// with zeros.
class CWalkFiles {
public:
    CWalkFiles(const SWalkFilePaths& paths, COperation& operation);

    /// Creates all four; codes 1101a, 1101b, 1101c and 1104.
    void Create();
    /// Copies `count` sectors of the image, and reopens the copy; code 1101d.
    void CopyPathTable(CByteSource& image, std::int64_t first, std::int64_t count);
    /// Copies the first `sectors` sectors of the image, and reopens the copy; code 1101e.
    void CopyHeader(CByteSource& image, std::uint32_t sectors);
    void WriteLists(std::span<const SWalkedFile> files);
    /// Appends sectors `first` to `end` - 1 of the image to the header copy; code 1101e.
    void ExtendHeader(CByteSource& image, std::uint32_t first, std::uint32_t end);
    /// Writes the first word of the offset list.
    void WriteHeaderLength(std::uint32_t sectors);

private:
    void CopySectors(CByteSource& image, std::int64_t first, std::int64_t count, CCheckedOutput& output);
    void Reopen(const std::string& path, const char* pattern);

    const SWalkFilePaths& m_paths;
    COperation& m_operation;
    CCheckedOutput m_headerCopy;
    CCheckedOutput m_fileList;
    CCheckedOutput m_pathTableCopy;
    CCheckedOutput m_offsetList;
};

}  // namespace vantrel
