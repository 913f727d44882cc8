// The gap file: the areas of an image that neither its leading structures nor a listed file covers. With it, a rebuild
// restores the image bit for bit. It stores the length of the image and only areas with data other than zeros, and the
// checksums of the listed files, by which a rebuild recognises the changed ones.
//
// All numbers are little-endian:
//     0  8 bytes   "IMLGAPS3"
//     8  64 bits   length of the image in bytes
//    16  32 bits   number of areas
//    20  32 bits   CRC-32 of the image
//    24  64 bits   length of the layout in bytes
//    32  32 bits   CRC-32 of the layout
//    36  32 bits   number of files
//    40  64 bits   length of the leading structures in bytes
//    48  32 bits   CRC-32 of the leading structures
//    52  32 bits   0
//    56  the index: for each area 64 bits of position in the image and 64 bits of length, both in bytes
//     …  for each file 32 bits of first sector, 32 bits of CRC-32 and 64 bits of length in bytes
//     …  the data of the areas, in the same order, up to the end of the file
// Areas are in ascending order and do not overlap. Files are in ascending order of sector, then length; files without
// content are left out, and so are further names of the same file.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "files/checksum.h"
#include "files/input_file.h"
#include "files/output_file.h"
#include "iso/image_area.h"

namespace vantrel {

/// What a gap file belongs to.
struct SGapOrigin {
    SChecksum image;
    SChecksum layout;
    SChecksum leading;
};

/// A file of the image as it was exported.
struct SExportedFile {
    std::uint32_t sector = 0;
    SChecksum sum;
};

/// The areas of an image of `imageLength` bytes outside of `covered`, whose positions ascend. The covered areas may
/// overlap and reach beyond the image.
std::vector<SImageArea> UncoveredAreas(std::span<const SImageArea> covered, std::int64_t imageLength);

/// The sectors in `areas` that hold anything but zeros; adjacent ones form one area.
std::vector<SImageArea> AreasWithData(CByteSource& image, std::span<const SImageArea> areas);

/// Writes a gap file to an open, empty output. False if the image ends before its areas do; the output notes failed
/// writes.
bool WriteGapFile(CByteSource& image, const SGapOrigin& origin, std::span<const SImageArea> areas,
                  std::vector<SExportedFile> files, COutputFile& output);

class CGapFileReader {
public:
    /// Opens a gap file and checks its index: order, the length of the image, the length of the file. False, with
    /// Problem() set, if anything is wrong.
    bool Open(const std::string& path);
    /// What is wrong, as a text that names the file.
    const std::string& Problem() const { return m_problem; }

    const SGapOrigin& Origin() const { return m_origin; }
    const std::vector<SImageArea>& Areas() const { return m_areas; }
    /// The file with content at that sector with that length; null if there is none.
    const SExportedFile* FindFile(std::uint32_t sector, std::int64_t length) const;

    /// Reads data of area `index` (from 0), starting at byte `offset` of the area. Reads fewer bytes than requested
    /// only at the end of the area and after an error.
    std::size_t ReadAt(std::size_t index, std::int64_t offset, std::span<std::uint8_t> buffer);

private:
    bool Refuse(const std::string& path, const char* reason);
    bool ReadIndex(std::uint32_t areas, std::uint32_t files);
    bool ReadFiles(std::uint32_t count);

    CInputFile m_file;
    std::string m_problem;
    SGapOrigin m_origin;
    std::vector<SImageArea> m_areas;
    std::vector<SExportedFile> m_files;
    std::vector<std::int64_t> m_dataPositions;
};

}  // namespace vantrel
