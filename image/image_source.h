// The image inside a file of any form, read by position: one interface, and one factory that looks at the content.
//
//     const std::unique_ptr<CImageSource> image = OpenImage("game.cso");
//     image->ReadAt(16 * kSectorSize, sector);
//
// A damaged block ends a read early. A caller that must not miss damage calls RefuseDamaged when it has read
// everything.
//
// Each form is one class. It answers facts about its container for `info`, the blocks of the image for `verify`, and
// the bytes of the image for everything else: by position with ReadAt, or in pieces that several threads expand.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "image/form.h"
#include "image/report.h"

namespace vantrel {

class CImageChunks;

class CImageSource : public CByteSource {
public:
    virtual EForm Form() const = 0;

    /// Bytes that are stored together: damage makes at least this many unreadable.
    virtual std::uint32_t BlockSize() const = 0;
    /// What a block is called in this form: "block", "frame" or "sector".
    virtual const char* BlockNoun() const = 0;
    /// Why the latest read that ended before the end of the image did so, said of one block: "its stream is damaged".
    /// Empty as long as every read was complete.
    virtual const std::string& Fault() const = 0;

    /// Header fields, ratio, and what other readers may not accept; nullopt if there is no container. Throws CRefused
    /// if the file has become unreadable.
    virtual std::optional<CReport> Facts() { return std::nullopt; }
    /// What the file lacks of the image that its header promises, in words.
    virtual std::vector<std::string> MissingParts() const { return {}; }
    /// What the file has besides the image, in words: other tracks.
    virtual std::vector<std::string> OtherParts() const { return {}; }
    /// The whole image in large chunks, with what is wrong in each.
    virtual std::unique_ptr<CImageChunks> Chunks();
};

/// Opens the image in a file of any form that is read, or in the data track of a CUE sheet. Throws CRefused if the file
/// cannot be opened, has another form, or has an unusable header or table.
std::unique_ptr<CImageSource> OpenImage(const std::string& path);

/// Throws CRefused if a read of the image, which was opened from `path`, met a damaged block.
void RefuseDamaged(const CImageSource& image, const std::string& path);

}  // namespace vantrel
