// Writes the UDF side of an image (ECMA-167, OSTA UDF 1.02) from a declaration. It shares no code with the rooms that
// read UDF, so tests compare two independent implementations of the standard.
//
//     SUdfDescription udf;
//     udf.start = 257;
//     udf.lastSector = 299;
//     udf.files = {{"DIR/A.BIN", {{280, 5000}}}};
//     const SBuiltUdf built = WriteUdfVolume(image, udf);
//
// Sectors: recognition 18 to 20, sequences 32 to 37 and 48 to 53, integrity sequence 64, anchor 256; from `start` on,
// the partition with file set descriptor, terminator, directories, continuations of allocation descriptors, file
// entries.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tests/support/test_folder.h"

namespace vantrel::test {

enum class EUdfAllocation : std::uint8_t { Short = 0, Long = 1, Embedded = 3 };

struct SUdfExtent {
    std::uint32_t sector = 0;
    std::uint32_t bytes = 0;
};

struct SUdfFileDescription {
    /// Folders and name, separated by '/', in UTF-8. The folders are created.
    std::string path;
    std::vector<SUdfExtent> extents = {};
    EUdfAllocation allocation = EUdfAllocation::Short;
    /// The content of an embedded file.
    Bytes embedded = {};
    /// Allocation descriptors in the entry and in each continuation block; 0: all in the entry.
    std::size_t descriptorsPerBlock = 0;
    /// Whether the entry is an extended one (tag 266).
    bool isExtended = false;
    /// The path of an earlier file whose entry this name shares.
    std::string sharesEntryOf = {};
};

struct SUdfDescription {
    std::uint32_t start = 257;     ///< first sector of the partition
    std::uint32_t lastSector = 0;  ///< the partition ends before it, and it has the closing anchor
    std::vector<SUdfFileDescription> files;
    std::vector<std::string> folders;  ///< empty ones; others need not be listed
    EUdfAllocation folderAllocation = EUdfAllocation::Short;
    bool anchorAt256 = true;
    bool anchorAtEnd = true;
    bool anchor256BeforeEnd = false;
};

struct SBuiltUdf {
    std::map<std::string, std::uint32_t> entries;      ///< sector of the file entry by path; "" is the root
    std::map<std::string, std::uint32_t> directories;  ///< first sector of a folder's content, unless embedded
    std::uint32_t end = 0;                             ///< first sector behind the structures
};

/// First sector behind the structures in the partition. Places and lengths of files do not matter.
std::uint32_t EndOfUdf(const SUdfDescription& description);

/// Writes all structures into an image that is long enough.
SBuiltUdf WriteUdfVolume(Bytes& image, const SUdfDescription& description);

/// Writes the tag (ECMA-167 3/7.2) of a descriptor of `length` bytes at a byte position of the image, also to make it
/// valid again after a change.
void WriteUdfTag(Bytes& image, std::size_t position, std::uint16_t identifier, std::size_t length,
                 std::uint32_t location);

}  // namespace vantrel::test
