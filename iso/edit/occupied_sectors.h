// Which sectors of an image belong to something.
#pragma once

#include <cstdint>
#include <map>

namespace vantrel {

class COccupiedSectors {
public:
    /// Marks the sectors from `first` to `end` - 1; they may be marked already.
    void Add(std::uint32_t first, std::uint32_t end);
    /// Whether none of the sectors from `first` to `end` - 1 is marked.
    bool IsFree(std::uint32_t first, std::uint32_t end) const;
    /// The first sector behind all marked ones that begin before `limit`; 0 if there are none.
    std::uint32_t EndBefore(std::uint32_t limit) const;

private:
    std::map<std::uint32_t, std::uint32_t> m_ends;  ///< first sector and end of each run; runs do not touch
};

}  // namespace vantrel
