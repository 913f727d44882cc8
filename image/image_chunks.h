// Reads a whole image in large chunks, and reports what is wrong in each.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "image/image_source.h"
#include "raw/track.h"

namespace vantrel {

struct SBlockFault {
    std::uint64_t number;
    std::string text;
};

struct SImageChunk {
    std::vector<std::uint8_t> buffer;  ///< The image's bytes stand at its beginning.
    std::size_t length = 0;            ///< Number of them.
    std::vector<SBlockFault> unreadable;
    std::vector<SBlockFault> wrong;  ///< Sectors of a raw image that are readable but not correct.

    std::span<const std::uint8_t> Bytes() const { return std::span(buffer).first(length); }
};

class CImageChunks {
public:
    virtual ~CImageChunks() = default;

    virtual std::uint64_t Count() const = 0;
    /// Bytes that the buffer of a chunk must hold. For a raw image these are more than the image's bytes.
    virtual std::size_t BufferSize() const = 0;
    /// Reads chunk `number`, from 0. Unreadable blocks are listed in the chunk, and their bytes left out.
    virtual void Read(SImageChunk& chunk, std::uint64_t number) = 0;
    /// What is wrong with the file besides its chunks.
    virtual std::vector<std::string> Problems() const = 0;
};

/// The chunks of an image, which must outlive them.
std::unique_ptr<CImageChunks> ChunksOf(CImageSource& image);
/// The chunks of a data track, with everything around the user data of its sectors checked. Throws CRefused if the file
/// cannot be opened again.
std::unique_ptr<CImageChunks> ChunksOf(const STrack& track);

}  // namespace vantrel
