// Faults of numbered things, put together into ranges: "sectors 5 to 9: EDC".
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vantrel {

class CFaultRanges {
public:
    /// What the things are called: "sector".
    explicit CFaultRanges(std::string noun) : m_noun(std::move(noun)) {}

    /// Notes a fault of thing `number`. Numbers come in ascending order; neighbours with the same text become one
    /// range.
    void Add(std::uint64_t number, const std::string& text);

    /// "sector 5: text" and "sectors 7 to 9: text", in order.
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
