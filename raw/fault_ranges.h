// Combines faults of numbered blocks into ranges: "sectors 5 to 9: EDC".
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vantrel {

class CFaultRanges {
public:
    /// `noun` is what a block is called: "sector".
    explicit CFaultRanges(std::string noun) : m_noun(std::move(noun)) {}

    /// Adds a fault of block `number`. Numbers must ascend; neighbours with the same text become one range.
    void Add(std::uint64_t number, const std::string& text);

    bool IsEmpty() const { return m_ranges.empty(); }
    /// "sector 5: text" or "sectors 7 to 9: text" for each range, in order.
    std::vector<std::string> Lines() const;

private:
    struct SRange {
        std::uint64_t first;
        std::uint64_t last;
        std::string text;
    };

    std::string m_noun;
    std::vector<SRange> m_ranges;
};

}  // namespace vantrel
