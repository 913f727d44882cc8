// Reading an image whole, as verifying does: stretch by stretch, with what is wrong in each.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "image/image_source.h"

namespace vantrel {

struct SBlockFault {
    std::uint64_t number;
    std::string text;
};

/// A stretch of an image.
struct SImagePiece {
    std::vector<std::uint8_t> room;  ///< For what the file has, which for a raw image is more than the image's bytes.
    std::size_t length = 0;          ///< Bytes of the image, which stand at the beginning.
    std::vector<SBlockFault> unreadable;
    std::vector<SBlockFault> wrong;  ///< Sectors of a raw image that can be read but are not what they should be.

    std::span<const std::uint8_t> Bytes() const { return std::span(room).first(length); }
};

/// Gives an image's pieces, one after the other.
class CImagePieces {
public:
    virtual ~CImagePieces() = default;

    virtual std::uint64_t Count() const = 0;
    /// Bytes of room that a piece needs.
    virtual std::size_t Room() const = 0;
    /// Reads piece `number`, from 0. Blocks that cannot be had are noted, and left out of the piece.
    virtual void Read(SImagePiece& piece, std::uint64_t number) = 0;
    /// What is wrong with the file beyond its pieces.
    virtual std::vector<std::string> Problems() const = 0;
};

/// The pieces of the image in the file at `path`, which `image` has opened and which both outlive.
std::unique_ptr<CImagePieces> PiecesOf(const std::string& path, CImageSource& image);

}  // namespace vantrel
