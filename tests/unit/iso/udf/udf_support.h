// A small image with a UDF volume, for the tests of this folder.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "iso/udf/udf_volume.h"
#include "tests/support/memory_source.h"
#include "tests/support/udf_builder.h"

namespace vantrel::test {

inline constexpr std::uint32_t kVolumeEnd = 400;  ///< sectors of the image
inline constexpr std::size_t kUdfSector = 2048;

struct SUdfImage {
    Bytes bytes = Bytes(kVolumeEnd * kUdfSector);
    SBuiltUdf built;

    std::size_t At(std::uint32_t sector) const { return sector * kUdfSector; }
    std::size_t Entry(const std::string& path) const { return At(built.entries.at(path)); }
    /// Makes the tag of a changed descriptor valid again; the length covers the CRC.
    void Reseal(std::size_t at, std::uint32_t location) {
        const std::size_t identifier = bytes[at] | bytes[at + 1] << 8U;
        const std::size_t covered = bytes[at + 10] | bytes[at + 11] << 8U;
        WriteUdfTag(bytes, at, static_cast<std::uint16_t>(identifier), covered + 16, location);
    }
    /// The same for a file entry.
    void ResealEntry(const std::string& path) { Reseal(Entry(path), built.entries.at(path) - 257); }
    /// Fills the sectors from `first` to the end with copies of the closing anchor.
    void RepeatClosingAnchor(std::uint32_t first) {
        const auto anchor = bytes.begin() + static_cast<std::ptrdiff_t>(At(kVolumeEnd - 1));
        for (std::uint32_t sector = first; sector < kVolumeEnd - 1; ++sector) {
            std::copy_n(anchor, 512, bytes.begin() + static_cast<std::ptrdiff_t>(At(sector)));
            WriteUdfTag(bytes, At(sector), 2, 512, sector);
        }
    }
    std::optional<SUdfVolume> Read() const {
        CMemorySource source(bytes);
        return ReadUdfVolume(source);
    }
    /// The message of the exception; empty if there is none.
    std::string Refusal() const {
        try {
            Read();
            return {};
        } catch (const std::exception& refused) {
            return refused.what();
        }
    }
};

inline SUdfImage UdfImage(SUdfDescription description, std::uint32_t sectors = kVolumeEnd) {
    SUdfImage image;
    image.bytes.resize(sectors * kUdfSector);
    description.lastSector = sectors - 1;
    for (const std::size_t sector : {16U, 17U}) {
        std::copy_n("CD001", 5, image.bytes.begin() + static_cast<std::ptrdiff_t>(sector * kUdfSector + 1));
    }
    image.built = WriteUdfVolume(image.bytes, description);
    return image;
}

/// A file of two extents in one folder, and another file at the root.
inline SUdfDescription FewUdfFiles() {
    SUdfDescription description;
    description.files = {{"DIR/A.BIN", {{300, 4096}, {310, 1000}}}, {"B.BIN", {{320, 2049}}}};
    return description;
}

inline const SUdfFile& FileIn(const SUdfVolume& volume, const std::string& path) {
    for (const SUdfFile& file : volume.files) {
        if (file.path == path) {
            return file;
        }
    }
    throw std::out_of_range(path);
}

/// "path: size, sector+bytes ..."
inline std::string TextOf(const SUdfFile& file) {
    std::string text = file.path + (file.isFolder ? "/: " : ": ") + std::to_string(file.size);
    for (const SExtent& extent : file.extents) {
        text += ", " + std::to_string(extent.sector) + '+' + std::to_string(extent.size);
    }
    return text + (file.embedded ? " embedded" : "");
}

/// The texts of all files that are no folders.
inline std::vector<std::string> FilesOf(const SUdfVolume& volume) {
    std::vector<std::string> texts;
    for (const SUdfFile& file : volume.files) {
        if (!file.isFolder) {
            texts.push_back(TextOf(file));
        }
    }
    return texts;
}

}  // namespace vantrel::test
