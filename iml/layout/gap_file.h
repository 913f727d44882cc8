// The areas of an image that neither its leading structures nor a listed file covers, kept beside the layout for a
// rebuild that gives back the image bit by bit. Only what is not zero is kept, and the image's length.
//
// All numbers are little-endian:
//     0  8 bytes   "IMLGAPS1"
//     8  64 bits   length of the image in bytes
//    16  32 bits   number of areas
//    20  32 bits   0
//    24  the index: for each area 64 bits of position in the image and 64 bits of length, both in bytes
//     …  the data of the areas, one after the other, up to the end of the file
// Areas ascend and do not overlap.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "files/input_file.h"
#include "files/output_file.h"

namespace vantrel {

/// A piece of an image, in bytes.
struct SImageArea {
    std::int64_t position = 0;
    std::int64_t length = 0;
};

/// The gap file of a layout: the same path with the extension ".gaps".
std::string GapPathOf(const std::string& layoutPath);

/// What `covered` leaves uncovered of an image of `imageLength` bytes. The areas may overlap and reach beyond the
/// image; their positions ascend.
std::vector<SImageArea> UncoveredAreas(std::span<const SImageArea> covered, std::int64_t imageLength);

/// The parts of `areas` that hold anything but zeros, told apart by sectors of the image.
std::vector<SImageArea> AreasWithData(CInputFile& image, std::span<const SImageArea> areas);

/// Writes a whole gap file to an output that is open and empty; the image supplies the data of the areas. False when
/// the image ends before its areas do; failures of writing are kept by the output.
bool WriteGapFile(CInputFile& image, std::span<const SImageArea> areas, COutputFile& output);

class CGapFileReader {
public:
    /// Opens a gap file and reads its index, which is checked: against the image's length, for order and against the
    /// file's own length. False, with Problem() set, when anything is wrong.
    bool Open(const std::string& path);
    /// What is wrong, as a text that names the file.
    const std::string& Problem() const { return m_problem; }

    /// Bytes of the image as a whole.
    std::int64_t ImageLength() const { return m_imageLength; }
    const std::vector<SImageArea>& Areas() const { return m_areas; }

    /// Reads data of area `index` (from 0) from byte `offset` of it on; the number of bytes read is smaller than the
    /// buffer only at the end of the area or after an error.
    std::size_t ReadAt(std::size_t index, std::int64_t offset, std::span<std::uint8_t> buffer);
    bool HasFailed() const { return m_file.HasFailed(); }

private:
    bool Refuse(const std::string& path, const char* reason);
    bool ReadIndex(std::uint32_t count);

    CInputFile m_file;
    std::string m_problem;
    std::int64_t m_imageLength = 0;
    std::vector<SImageArea> m_areas;
    std::vector<std::int64_t> m_dataPositions;
};

}  // namespace vantrel
