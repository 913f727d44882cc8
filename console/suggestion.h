// Finds what a misspelt word of the command line may stand for.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantrel {

/// The number of characters to insert, remove, replace or swap with their neighbour to make one text of the other.
std::size_t EditDistance(std::string_view first, std::string_view second);

/// The candidate that is most like the word; empty if none is like it.
std::string NearestWord(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace vantrel
