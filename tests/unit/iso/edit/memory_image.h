// An image in memory, and its bytes after a plan.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>

#include "files/byte_source.h"
#include "iso/edit/disc_map.h"
#include "iso/patch.h"
#include "tests/support/image_builder.h"

namespace vantrel::test {

class CMemoryImage : public CByteSource {
public:
    explicit CMemoryImage(Bytes bytes) : m_bytes(std::move(bytes)) {}

    std::int64_t Size() const override { return static_cast<std::int64_t>(m_bytes.size()); }
    std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) override {
        ++m_reads;
        m_bytesRead += static_cast<std::int64_t>(buffer.size());
        if (position < 0 || position >= Size()) {
            return 0;
        }
        const auto start = m_bytes.begin() + position;
        const std::size_t count = std::min(buffer.size(), static_cast<std::size_t>(m_bytes.end() - start));
        std::copy_n(start, count, buffer.begin());
        return count;
    }

    Bytes m_bytes;
    int m_reads = 0;
    std::int64_t m_bytesRead = 0;
};

/// Index of the place that a path of the primary volume names; the number of places if there is none.
inline std::size_t PlaceOf(const SDiscMap& map, std::string_view path) {
    const auto found = std::find_if(map.places.begin(), map.places.end(), [path](const SDiscPlace& place) {
        return std::any_of(place.names.begin(), place.names.end(),
                           [path](const SDiscName& name) { return name.path == path; });
    });
    return static_cast<std::size_t>(found - map.places.begin());
}

/// Sector and length of a directory record, in both byte orders.
inline void SetRecord(Bytes& image, std::size_t record, std::uint32_t sector, std::uint32_t size) {
    const std::uint32_t values[] = {sector, size};
    for (std::size_t i = 0; i < 2; ++i) {
        Write32(image, record + 2 + 8 * i, values[i]);
        Write32(image, record + 6 + 8 * i, __builtin_bswap32(values[i]));
    }
}

/// Writes a volume of these files in place of the UDF volume of a DVD image. It may need sectors behind the old one.
inline SBuiltUdf ReplaceUdf(Bytes& image, std::vector<SUdfFileDescription> files) {
    constexpr std::size_t kPartition = 34 * 2048;
    SUdfDescription udf;
    udf.start = Read32(image, kPartition + 188);
    udf.lastSector = udf.start + Read32(image, kPartition + 192);
    udf.files = std::move(files);
    const auto at = [&image](std::uint32_t sector) { return image.begin() + std::ptrdiff_t{sector} * 2048; };
    std::fill(at(udf.start), at(EndOfUdf(udf)), std::uint8_t{0});
    return WriteUdfVolume(image, udf);
}

/// The image with patches inside of it or directly behind it.
inline Bytes Patched(Bytes image, const std::vector<SSectorPatch>& patches) {
    for (const SSectorPatch& patch : patches) {
        image.resize(std::max(image.size(), static_cast<std::size_t>(patch.position) + patch.bytes.size()));
        std::copy(patch.bytes.begin(), patch.bytes.end(), image.begin() + patch.position);
    }
    return image;
}

}  // namespace vantrel::test
