// UDF volumes: whatever is accepted is consistent, and says about a replaced file what its patches were made for.
//
//      8 bits  the file that is replaced
//      8 bits  exponent: its new size is
//     16 bits  this number times a power of two
//     then the image, as patches
#include <algorithm>
#include <numeric>

#include "files/refused.h"
#include "fuzz/expect.h"
#include "fuzz/input_parts.h"
#include "fuzz/patched_image.h"
#include "iso/udf/udf_patches.h"
#include "iso/udf/udf_volume.h"
#include "tests/support/memory_source.h"

namespace vantrel::fuzz {

namespace {

std::int64_t SizeOf(const std::vector<SExtent>& extents) {
    return std::accumulate(extents.begin(), extents.end(), std::int64_t{0},
                           [](std::int64_t sum, const SExtent& extent) { return sum + extent.size; });
}

void CheckVolume(const SUdfVolume& volume, std::int64_t imageSize) {
    Expect(!volume.files.empty() && volume.files[0].isFolder && volume.files[0].path.empty(), "the root is first");
    const std::int64_t end = (std::int64_t{volume.partitionStart} + volume.partitionSectors) * kSectorSize;
    for (const SUdfFile& file : volume.files) {
        Expect(file.embedded || SizeOf(file.extents) == file.size, "extents have the size of their file");
        Expect(!file.embedded || file.extents.empty(), "an embedded file has no extents");
        for (const SExtent& extent : file.extents) {
            Expect(extent.sector >= volume.partitionStart && extent.End() <= end, "extents are in the partition");
        }
    }
    std::int64_t last = 0;
    for (const SExtent& area : volume.structures) {
        Expect(area.Position() > last && area.size > 0 && area.End() <= imageSize, "areas are sorted and joined");
        last = area.End();
    }
    Expect(volume.closingAnchors <= volume.anchors.size(), "closing anchors are anchors");
}

void Apply(Bytes& image, const std::vector<SSectorPatch>& patches) {
    for (const SSectorPatch& patch : patches) {
        const auto start = static_cast<std::size_t>(patch.position);
        if (start + patch.bytes.size() <= image.size()) {
            std::copy(patch.bytes.begin(), patch.bytes.end(), image.begin() + patch.position);
        }
    }
}

/// Gives the file a place behind the end of the image, or of the partition.
void Replace(const Bytes& before, const SUdfVolume& volume, const SUdfFile& file, std::int64_t size) {
    test::CMemorySource source(before);
    const std::int64_t imageEnd = source.Size() / kSectorSize;
    const std::int64_t end = std::int64_t{volume.partitionStart} + volume.partitionSectors;
    const std::int64_t added = SectorsFor(size);
    const bool hasClosing = volume.closingAnchors > 0;
    if (end < imageEnd - 1 || end + added >= std::int64_t{1} << 32U ||
        (hasClosing && volume.anchors.back() + 1 != imageEnd)) {
        return;
    }
    Bytes image = before;
    try {
        Apply(image, PatchUdfFile(source, volume, file, static_cast<std::uint32_t>(end), size));
        Apply(image, PatchUdfLength(source, volume, static_cast<std::uint32_t>(added)));
    } catch (const CRefused&) {
        return;
    }
    test::CMemorySource changed(image, (imageEnd + added) * kSectorSize);
    const std::optional<SUdfVolume> again = ReadUdfVolume(changed);
    Expect(again && again->files.size() == volume.files.size(), "a patched volume has the same files");
    for (std::size_t i = 0; i < volume.files.size(); ++i) {
        const SUdfFile& was = volume.files[i];
        const SUdfFile& is = again->files[i];
        Expect(is.path == was.path, "a patched volume has the same names");
        if (was.entrySector != file.entrySector) {
            Expect(is.size == was.size && is.extents == was.extents, "other files stay as they are");
            continue;
        }
        Expect(is.size == size && !is.embedded && SizeOf(is.extents) == size, "a patched file has its new size");
        Expect(size == 0 || (is.extents.size() == 1 && is.extents[0].sector == end), "and its new place");
    }
}

}  // namespace

}  // namespace vantrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel;
    using namespace vantrel::fuzz;
    CInputParts parts({data, size});
    const std::size_t choice = parts.Byte();
    const std::uint32_t exponent = parts.Byte() % 20U;
    const std::int64_t newSize = std::int64_t{parts.Number()} << exponent;
    const Bytes image = PatchedImage(parts.Rest());
    test::CMemorySource source(image);
    try {
        const std::optional<SUdfVolume> volume = ReadUdfVolume(source);
        if (!volume) {
            return 0;
        }
        CheckVolume(*volume, source.Size());
        const SUdfFile& file = volume->files[choice % volume->files.size()];
        if (!file.isFolder) {
            Replace(image, *volume, file, newSize);
        }
    } catch (const CRefused&) {
        // contradicts itself
    }
    return 0;
}
