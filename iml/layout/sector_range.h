// Which sectors a layout gives to a file.
#pragma once

#include <cstdint>

namespace vantrel {

/// First and last sector, inclusive.
struct SSectorRange {
    std::uint32_t first = 0;
    std::uint32_t last = 0;
};

/// Gives ranges to the files of a list, one after the other in list order.
class CRangeRule {
public:
    /// The range of a file of `size` bytes at sector `start`. An empty file has one sector. A file with the same start
    /// and the same padding as the one remembered is reduced to its last sector; any other is remembered instead.
    SSectorRange Next(std::uint32_t start, std::uint32_t size);

private:
    std::uint32_t m_start = 0;
    std::uint32_t m_padding = 2032;
};

}  // namespace vantrel
