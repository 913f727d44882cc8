// What a conversion to a raw image asks about its input: is it an image of a PlayStation 2 CD, and how long is it?
#pragma once

#include <cstdint>
#include <string>

#include "files/input_file.h"
#include "operation/operation.h"

namespace vantrel {

struct SCdImage {
    std::int64_t length = 0;          ///< Of the file, in bytes.
    std::uint32_t volumeSectors = 0;  ///< Volume space size of the primary volume descriptor (ECMA-119, 8.4.8).

    /// Whole sectors of the file; lengths are 32-bit quantities here.
    std::uint32_t Sectors() const;
    /// A file that is not exactly as long as its volume gets a postgap.
    bool NeedsPostgap() const { return volumeSectors != Sectors(); }
};

/// Opens the image and examines it. Fails under code 103 when it cannot be opened, and under code 76 when its primary
/// volume descriptor carries no CD-XA mark or its application identifier does not begin with "PLA".
SCdImage ExamineCdImage(const std::string& path, CInputFile& image, COperation& operation);

}  // namespace vantrel
