// The image inside a file of any form, read by position: one interface, one factory that looks at the content.
//
//     std::string problem;
//     const std::unique_ptr<CImageSource> image = OpenImage("game.cso", problem);
//     if (!image) { ...tell problem... }
//     image->ReadAt(16 * 2048, sector);
#pragma once

#include <memory>
#include <string>

#include "files/byte_source.h"
#include "image/form.h"

namespace vantrel {

class CImageSource : public CByteSource {
public:
    virtual EForm Form() const = 0;

    /// Bytes that can only be had together: a damaged place spoils this much.
    virtual std::uint32_t BlockSize() const = 0;
    /// What a block is called in this form: "block", "frame" or "sector".
    virtual const char* BlockNoun() const = 0;
    /// Why a read came up short before the end of the image, the last time that one did, said of one block: "its stream
    /// is damaged". Empty as long as everything could be read.
    virtual const std::string& Fault() const = 0;
};

/// Opens the image in an ISO, CSO, DAX or BIN file. Nothing, and what is wrong in words, when the file cannot be
/// opened, has another form, or a header or table that cannot be used.
std::unique_ptr<CImageSource> OpenImage(const std::string& path, std::string& problem);

}  // namespace vantrel
