// What a conversion to a raw image must know about its input: whether it is an image of a PlayStation 2 CD, and its
// length.
#pragma once

#include <cstdint>
#include <string>

#include "files/checked_file.h"
#include "iso/iso9660.h"
#include "operation/operation.h"

namespace vantrel {

struct SCdImage {
    std::int64_t length = 0;  ///< of the file, in bytes
    SPrimaryVolumeDescriptor volume = {};

    /// Whole sectors of the file. The length is taken as an unsigned 32-bit number.
    std::uint32_t Sectors() const;
    std::uint32_t VolumeSectors() const { return volume.volumeSpaceSize.Value(); }
    /// Whether the window appends a postgap: to every file that is not exactly as long as its volume.
    bool NeedsPostgap() const { return VolumeSectors() != Sectors(); }
};

/// Attaches `source`, the image in a container, or opens the file `path`, and examines the image. Fails with code 103
/// if it cannot be opened, and with code 76 if its primary volume descriptor has no CD-XA mark or its application
/// identifier does not start with "PLA".
SCdImage ExamineCdImage(const std::string& path, CCheckedInput& image, COperation& operation,
                        CByteSource* source = nullptr);

}  // namespace vantrel
