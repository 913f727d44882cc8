// Masters small ISO 9660 images from a declaration: PlayStation 2 CD and DVD (with a UDF bridge) and PSP UMD. It shares
// no code with the rooms that read images, so that tests compare two views of the same standard.
//
//     SImageDescription description;
//     description.kind = EImageKind::Cd;
//     description.files = {{"SYSTEM.CNF", TextLikeBytes(61, 1)}, {"DATA/LEVEL1.BIN", RandomBytes(5000, 2)}};
//     const SBuiltImage image = BuildImage(description);
//     WriteWhole(folder / "game.iso", image.bytes);
//
// Order of sectors: system area; descriptors at 16; (DVD: UDF sequences at 18 to 64, anchor at 256); path tables
// L, optional L, M, optional M; UDF file entries "before"; directories in the order of the path table; UDF file entries
// "after"; files in the order of the declaration, each after its hole; (DVD: closing anchor); postgap.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/test_folder.h"

namespace vantrel::test {

inline constexpr std::uint32_t kImageSector = 2048;
inline constexpr std::uint32_t kPostgapSectors = 150;

enum class EImageKind { Cd, Dvd, Umd };

/// The 150 zero sectors at the end of a CD image, and whether the volume size counts them.
enum class EPostgap {
    None,       ///< not there and not counted
    Missing,    ///< counted, but the image ends 150 sectors earlier
    Uncounted,  ///< there, but not counted
    Counted,    ///< there and counted
};

/// Where an empty file is recorded.
enum class EEmptyFile {
    OwnsSector,    ///< at a sector of its own, which is zeros
    SharesSector,  ///< at the sector of the file that follows it (or of the image's end)
};

struct SImageFile {
    /// Folders and name, separated by '/', without version: "DIR/SUB/NAME.EXT". Folders come into being by it.
    std::string path;
    Bytes content;
    /// Free sectors left before the file; filled with SImageDescription::holeFill.
    std::uint32_t holeBefore = 0;
    EEmptyFile whenEmpty = EEmptyFile::OwnsSector;
};

struct SImageDescription {
    EImageKind kind = EImageKind::Cd;
    /// In the order of their sectors; records are sorted by name as ECMA-119 9.3 wants.
    std::vector<SImageFile> files;
    /// Folders without files ("A/B"); the others need not be named.
    std::vector<std::string> folders;
    /// Whether the optional path tables follow the required ones; otherwise their locations are 0.
    bool optionalPathTables = true;
    /// Whether each directory record carries the 14 bytes of CD-ROM XA attributes. On a UMD or DVD as well, if asked.
    bool xaAttributes = false;
    /// Whether file names carry ";1".
    bool versions = true;
    EPostgap postgap = EPostgap::None;
    /// Every byte of the holes and of the sectors `tailSectors`.
    std::uint8_t holeFill = 0;
    /// Every byte between the end of a file and the end of its last sector.
    std::uint8_t paddingFill = 0;
    /// Sectors after the last file that no file covers (before closing anchor and postgap).
    std::uint32_t tailSectors = 0;
    /// DVD: UDF file entries between path tables and directories, and between directories and files.
    std::uint32_t udfEntriesBefore = 2;
    std::uint32_t udfEntriesAfter = 3;
    /// DVD: free sectors between the last directory and the first of the file entries "after".
    std::uint32_t udfHoleBeforeEntries = 0;
    /// DVD: whether sector 256 and the last sector carry an anchor (ECMA-167 tag 2).
    bool anchorAt256 = true;
    bool anchorAtEnd = true;
    std::string volumeName = "VOLUME";
};

struct SBuiltFile {
    /// "\DIR\SUB\NAME.EXT"
    std::string path;
    std::uint32_t sector = 0;
    Bytes content;
    /// Byte position of its directory record in the image, for tests that spoil records.
    std::size_t recordOffset = 0;
};

struct SBuiltDirectory {
    /// "" for the root, "\DIR\SUB" for the others
    std::string path;
    std::uint32_t sector = 0;
    /// Bytes, a multiple of 2048.
    std::uint32_t size = 0;
    /// Number of its parent in the path table, from 1.
    std::uint16_t parent = 1;
    /// Byte position of its record in the L path table.
    std::size_t pathTableOffset = 0;
};

struct SBuiltImage {
    Bytes bytes;
    /// In the order in which a reader of the directories meets them, then stably by sector.
    std::vector<SBuiltFile> files;
    /// In the order of the path table.
    std::vector<SBuiltDirectory> directories;
    std::uint32_t pathTableSector = 0;
    std::uint32_t pathTableBytes = 0;
    /// First sector after the last directory, and after the last UDF file entry before the files (the same but on DVD).
    std::uint32_t directoryEnd = 0;
    std::uint32_t headerEnd = 0;
    /// What the volume descriptor says.
    std::uint32_t volumeSectors = 0;

    /// The file of that path; the test fails when there is none.
    const SBuiltFile& File(std::string_view path) const;
};

SBuiltImage BuildImage(const SImageDescription& description);

/// `count` files spread over `folders` folders (0: all in the root; nested four deep), of sizes from 0 to about three
/// sectors around every interesting boundary, in a sector order that differs from the order of the names.
std::vector<SImageFile> ManyFiles(std::size_t count, std::size_t folders, std::uint64_t seed);

}  // namespace vantrel::test
