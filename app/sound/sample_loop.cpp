#include "app/sound/sample_loop.h"

#include <algorithm>

namespace vantrel {

std::size_t UsableBufferSize(std::size_t blockAlign) {
    return blockAlign == 0 ? 0 : kWaveBufferSize - kWaveBufferSize % blockAlign;
}

void FillFromLoop(std::span<const std::uint8_t> samples, std::size_t& readPosition, std::span<std::uint8_t> buffer) {
    if (samples.empty()) {
        return;
    }
    std::size_t filled = 0;
    while (filled < buffer.size()) {
        readPosition %= samples.size();
        const std::size_t count = std::min(buffer.size() - filled, samples.size() - readPosition);
        std::copy_n(samples.begin() + static_cast<std::ptrdiff_t>(readPosition), count,
                    buffer.begin() + static_cast<std::ptrdiff_t>(filled));
        filled += count;
        readPosition += count;
    }
}

}  // namespace vantrel
