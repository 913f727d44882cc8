// The sectors that a layout assigns to a file.
#pragma once

#include <cstdint>

namespace vantrel {

/// First and last sector, inclusive.
struct SSectorRange {
    std::uint32_t first = 0;
    std::uint32_t last = 0;
};

/// Assigns ranges to files, in the order of the list.
class CRangeRule {
public:
    /// The range of a file of `size` bytes at sector `start`. An empty file gets one sector. A file with the start and
    /// the padding of the remembered file gets only its last sector; every other file becomes the remembered one.
    SSectorRange Next(std::uint32_t start, std::int64_t size);

private:
    std::uint32_t m_start = 0;
    std::uint32_t m_padding = 2032;
};

}  // namespace vantrel
