// Helper of udf_oracle.py: lists a UDF volume, and moves a file of it to the end of the image.
//
//     udf_volumes make FOLDER
//     udf_volumes list IMAGE
//     udf_volumes move IMAGE PATH CONTENT
#include <cstdio>
#include <stdexcept>
#include <string>

#include "files/path.h"
#include "iso/udf/udf_patches.h"
#include "iso/udf/udf_volume.h"
#include "tests/support/image_builder.h"
#include "tests/support/memory_source.h"

namespace vantrel::test {
namespace {

void MakeImages(const std::string& folder) {
    SImageDescription description;
    description.kind = EImageKind::Dvd;
    description.udf = EUdf::Volume;
    description.files = ManyFiles(500, 60, 7);
    description.folders = {"HOLLOW/INNER"};
    WriteWhole(folder + "builder.iso", BuildImage(description).bytes);
}

/// Fields separated by tabs: path, kind, sector of the entry, size, extents as sector+bytes.
void List(const Bytes& image) {
    CMemorySource source(image);
    const SUdfVolume volume = ReadUdfVolume(source).value();
    for (const std::string& finding : volume.findings) {
        std::printf("finding\t%s\n", finding.c_str());
    }
    for (const SUdfFile& file : volume.files) {
        std::printf("%s\t%s\t%u\t%lld\t", file.path.c_str(), file.isFolder ? "folder" : "file", file.entrySector,
                    static_cast<long long>(file.size));
        for (const SExtent& extent : file.extents) {
            std::printf("%u+%lld ", extent.sector, static_cast<long long>(extent.size));
        }
        std::printf("\n");
    }
}

/// Inserts the content before the closing anchors; the UDF side of the image is right afterwards.
void Move(const std::string& path, const std::string& name, const Bytes& content) {
    Bytes image = ReadWhole(path);
    CMemorySource source(image);
    const SUdfVolume volume = ReadUdfVolume(source).value();
    const auto last = static_cast<std::uint32_t>(image.size() / kImageSector - 1);
    const auto added = static_cast<std::uint32_t>(SectorsFor(static_cast<std::int64_t>(content.size())));
    const auto place = static_cast<std::uint32_t>(last + 1 - volume.closingAnchors);
    std::vector<SSectorPatch> patches = PatchUdfLength(source, volume, added);
    for (const SUdfFile& file : volume.files) {
        if (file.path == name) {
            const auto more = PatchUdfFile(source, volume, file, place, static_cast<std::int64_t>(content.size()));
            patches.insert(patches.end(), more.begin(), more.end());
        }
    }
    image.resize(image.size() + added * std::size_t{kImageSector});
    const auto start = image.begin() + place * std::ptrdiff_t{kImageSector};
    if (added > 0) {
        std::fill(std::copy(content.begin(), content.end(), start), image.end(), std::uint8_t{0});
    }
    for (const SSectorPatch& patch : patches) {
        std::copy(patch.bytes.begin(), patch.bytes.end(), image.begin() + patch.position);
    }
    WriteWhole(path, image);
}

}  // namespace
}  // namespace vantrel::test

int main(int count, char** words) {
    using namespace vantrel;
    const std::string command = count > 2 ? words[1] : "";
    try {
        if (command == "make" && count == 3) {
            test::MakeImages(WithSeparator(words[2]));
            return 0;
        }
        if (command == "list" && count == 3) {
            test::List(test::ReadWhole(words[2]));
            return 0;
        }
        if (command == "move" && count == 5) {
            test::Move(words[2], words[3], test::ReadWhole(words[4]));
            return 0;
        }
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
    std::fprintf(stderr, "usage: udf_volumes make FOLDER | list IMAGE | move IMAGE PATH CONTENT\n");
    return 2;
}
