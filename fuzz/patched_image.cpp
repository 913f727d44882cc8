#include "fuzz/patched_image.h"

#include <algorithm>

#include "fuzz/input_parts.h"

namespace vantrel::fuzz {

namespace {

constexpr std::size_t kSector = 2048;
/// Enough for all marks of an image, the first anchor of a DVD and a postgap.
constexpr std::size_t kMaxSectors = 512;
/// A patch ends before this number of zeros.
constexpr std::size_t kZerosBetweenPatches = 8;

/// The end of the patch that starts at `start`: behind its last nonzero byte.
std::size_t EndOfPatch(std::span<const std::uint8_t> image, std::size_t start) {
    const std::size_t limit = std::min(image.size(), (start / kSector + 1) * kSector);
    std::size_t end = start + 1;
    for (std::size_t i = end; i < limit && i - end < kZerosBetweenPatches; ++i) {
        if (image[i] != 0) {
            end = i + 1;
        }
    }
    return end;
}

}  // namespace

Bytes PatchedImage(std::span<const std::uint8_t> input) {
    CInputParts parts(input);
    const std::size_t sectors = parts.Number() % (kMaxSectors + 1);
    Bytes image(sectors * kSector + parts.Byte());
    while (!parts.IsEmpty()) {
        const std::size_t sector = parts.Number();
        const std::size_t start = std::min(sector * kSector + parts.Number(), image.size());
        const std::span<const std::uint8_t> bytes = parts.Part();
        const std::size_t count = std::min(bytes.size(), image.size() - start);
        std::copy_n(bytes.begin(), count, image.begin() + static_cast<std::ptrdiff_t>(start));
    }
    return image;
}

Bytes PatchesOf(std::span<const std::uint8_t> image) {
    CPartWriter writer;
    writer.Number(image.size() / kSector).Byte(static_cast<std::uint8_t>(image.size() % kSector));
    for (std::size_t i = 0; i < image.size(); ++i) {
        if (image[i] != 0) {
            const std::size_t end = EndOfPatch(image, i);
            writer.Number(i / kSector).Number(i % kSector).Part(image.subspan(i, end - i));
            i = end - 1;
        }
    }
    return writer.Bytes();
}

}  // namespace vantrel::fuzz
