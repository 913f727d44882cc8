// The form of a file, determined from its content and never from its name.
#pragma once

#include <string>

#include "files/byte_source.h"

namespace vantrel {

enum class EForm {
    Unknown,
    Iso,  ///< an image of 2048-byte sectors with the identifier "CD001" in sector 16 (ECMA-119 8.1.2)
    Cso,
    Zso,
    Dax,
    Bin,  ///< an image of 2352-byte sectors, recognised by the sync field of the first (ECMA-130 14.1)
    Iml,  ///< a layout
    Cue,  ///< a CUE sheet

    // Recognised by name only.
    Chd,
    Gz,
    SevenZip,
    Nrg,
    Mdf,  ///< the descriptor of an image whose sectors are in another file
    Ecm,
    Pbp,
};

/// The form of a file. Compressed and raw forms are recognised by a few bytes alone; opening the image then shows
/// whether the file really holds one.
EForm FormOf(CByteSource& file);

/// The same for a file that is not open yet. Throws CRefused if it cannot be opened or read.
EForm FormOfFile(const std::string& path);

/// "ISO", "CSO", "ZSO", "DAX", "BIN", "IML", "CUE" and so on; "unknown" for the rest.
const char* NameOf(EForm form);

/// "a CSO file", "an ISO file"
std::string FileOf(EForm form);

/// Whether an image can be read from files of this form.
bool IsReadable(EForm form);

}  // namespace vantrel
