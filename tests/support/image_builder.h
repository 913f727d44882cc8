// Masters small ISO 9660 images from a declaration: PlayStation 2 CD and DVD (with a UDF bridge) and PSP UMD. It shares
// no code with the rooms that read images, so tests compare two independent implementations of the standard.
//
//     SImageDescription description;
//     description.kind = EImageKind::Cd;
//     description.files = {{"SYSTEM.CNF", TextLikeBytes(61, 1)}, {"DATA/LEVEL1.BIN", RandomBytes(5000, 2)}};
//     const SBuiltImage image = BuildImage(description);
//     WriteWhole(folder / "game.iso", image.bytes);
//
// Order of sectors: system area; descriptors from 16 on; on DVD UDF sequences at 18 to 64 and an anchor at 256; path
// tables L, optional L, M, optional M; UDF file entries "before"; directories in the order of the path table; UDF file
// entries "after"; files in the order of the declaration, each preceded by its hole; on DVD the closing anchor;
// postgap.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/test_folder.h"
#include "tests/support/udf_builder.h"

namespace vantrel::test {

inline constexpr std::uint32_t kImageSector = 2048;
inline constexpr std::uint32_t kPostgapSectors = 150;

enum class EImageKind { Cd, Dvd, Umd };

/// Whether a CD image ends with 150 zero sectors, and whether the volume size includes them.
enum class EPostgap {
    None,       ///< absent and not counted
    Missing,    ///< counted, but the image ends 150 sectors earlier
    Uncounted,  ///< present, but not counted
    Counted,    ///< present and counted
};

/// Where an empty file is recorded.
enum class EEmptyFile {
    OwnsSector,    ///< at a sector of its own, filled with zeros
    SharesSector,  ///< at the sector of the next file, or at the end of the image
};

/// The UDF side of a DVD image.
enum class EUdf {
    Marks,   ///< descriptors without content and file entries of no file: enough for readers of tags
    Volume,  ///< a volume with all files, whose structures are between directories and files
};

struct SImageFile {
    /// Folders and name, separated by '/', without version: "DIR/SUB/NAME.EXT". The folders are created.
    std::string path;
    Bytes content;
    /// Unused sectors before the file, filled with SImageDescription::holeFill.
    std::uint32_t holeBefore = 0;
    EEmptyFile whenEmpty = EEmptyFile::OwnsSector;
};

struct SImageDescription {
    EImageKind kind = EImageKind::Cd;
    /// In the order of their sectors. Directory records are sorted by name (ECMA-119 9.3).
    std::vector<SImageFile> files;
    /// Empty folders ("A/B"); others need not be listed.
    std::vector<std::string> folders;
    /// Whether the optional path tables follow the required ones; otherwise their locations are 0.
    bool optionalPathTables = true;
    /// Whether each directory record has the 14 bytes of CD-ROM XA attributes, on any medium.
    bool xaAttributes = false;
    /// Whether file names end in ";1".
    bool versions = true;
    EPostgap postgap = EPostgap::None;
    /// Value of every byte in holes and in the `tailSectors`.
    std::uint8_t holeFill = 0;
    /// Value of every byte between the end of a file and the end of its last sector.
    std::uint8_t paddingFill = 0;
    /// Unused sectors after the last file, before closing anchor and postgap.
    std::uint32_t tailSectors = 0;
    EUdf udf = EUdf::Marks;
    /// DVD with marks only: number of UDF file entries between path tables and directories, and between directories and
    /// files.
    std::uint32_t udfEntriesBefore = 2;
    std::uint32_t udfEntriesAfter = 3;
    /// DVD: unused sectors between the last directory and the first file entry "after" or the volume's structures.
    std::uint32_t udfHoleBeforeEntries = 0;
    /// DVD: whether sector 256 and the last sector have an anchor (ECMA-167 tag 2).
    bool anchorAt256 = true;
    bool anchorAtEnd = true;
    std::string volumeName = "VOLUME";
};

struct SBuiltFile {
    /// "\DIR\SUB\NAME.EXT"
    std::string path;
    std::uint32_t sector = 0;
    Bytes content;
    /// Byte position of its directory record in the image, for tests that corrupt records.
    std::size_t recordOffset = 0;
};

struct SBuiltDirectory {
    /// "" for the root, otherwise "\DIR\SUB"
    std::string path;
    std::uint32_t sector = 0;
    /// Bytes, a multiple of 2048.
    std::uint32_t size = 0;
    /// Number of its parent in the path table, starting at 1.
    std::uint16_t parent = 1;
    /// Byte position of its record in the L path table.
    std::size_t pathTableOffset = 0;
};

struct SBuiltImage {
    Bytes bytes;
    /// Sorted by sector; files with the same sector are in the order of their directory records.
    std::vector<SBuiltFile> files;
    /// In the order of the path table.
    std::vector<SBuiltDirectory> directories;
    std::uint32_t pathTableSector = 0;
    std::uint32_t pathTableBytes = 0;
    /// First sector after the last directory, and after the last UDF file entry before the files. The same except on
    /// DVD.
    std::uint32_t directoryEnd = 0;
    std::uint32_t headerEnd = 0;
    /// The volume space size in the descriptor.
    std::uint32_t volumeSectors = 0;
    /// With EUdf::Volume.
    SBuiltUdf udf;

    /// The file with that path; the test fails if there is none.
    const SBuiltFile& File(std::string_view path) const;
};

SBuiltImage BuildImage(const SImageDescription& description);

/// `count` files in `folders` folders (0: all in the root), nested up to four deep. Their sizes, from 0 to about three
/// sectors, are around all boundaries; the order of their sectors differs from the order of their names.
std::vector<SImageFile> ManyFiles(std::size_t count, std::size_t folders, std::uint64_t seed);

}  // namespace vantrel::test
