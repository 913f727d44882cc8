// What form a file has, told from its content and never from its name.
#pragma once

#include "files/byte_source.h"

namespace vantrel {

enum class EForm {
    Unknown,
    Iso,  ///< an image of 2048-byte sectors with the identifier "CD001" in sector 16 (ECMA-119 8.1.2)
    Cso,
    Dax,
    Bin,  ///< an image of 2352-byte sectors, told from the sync field of the first (ECMA-130 14.1)
    Iml,  ///< a layout
    Cue,  ///< a sheet
};

/// The form of a file. Compressed and raw forms are told from their first bytes alone; whether they hold an image is
/// seen when they are opened.
EForm FormOf(CByteSource& file);

/// "ISO", "CSO", "DAX", "BIN", "IML", "CUE"; "unknown" for the rest.
const char* NameOf(EForm form);

}  // namespace vantrel
