#include "image/image_compare.h"

#include <algorithm>
#include <vector>

namespace vantrel {

namespace {

/// Bytes that are compared at a time; a multiple of every block size.
constexpr std::size_t kComparedSize = 1U << 20U;

}  // namespace

std::int64_t FirstDifference(CByteSource& image, CByteSource& other, COperation& operation) {
    operation.SetTotal(image.Size());
    std::vector<std::uint8_t> bytes(kComparedSize);
    std::vector<std::uint8_t> otherBytes(kComparedSize);
    std::int64_t position = 0;
    while (true) {
        operation.Yield();
        const std::size_t count = image.ReadAt(position, bytes);
        const std::size_t otherCount = other.ReadAt(position, otherBytes);
        const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(std::min(count, otherCount));
        const auto differing = std::mismatch(bytes.begin(), end, otherBytes.begin()).first;
        position += differing - bytes.begin();
        if (differing != end || count != otherCount || count == 0) {
            return position;
        }
        operation.SetDone(position);
    }
}

}  // namespace vantrel
