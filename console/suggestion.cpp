#include "console/suggestion.h"

#include <algorithm>

namespace vantrel {

std::size_t EditDistance(std::string_view first, std::string_view second) {
    // Row i has the distances of the first i characters to every beginning of the second text.
    std::vector<std::vector<std::size_t>> rows(first.size() + 1, std::vector<std::size_t>(second.size() + 1));
    for (std::size_t i = 0; i <= first.size(); ++i) {
        for (std::size_t j = 0; j <= second.size(); ++j) {
            if (i == 0 || j == 0) {
                rows[i][j] = i + j;
                continue;
            }
            const std::size_t replaced = rows[i - 1][j - 1] + (first[i - 1] == second[j - 1] ? 0 : 1);
            rows[i][j] = std::min({rows[i - 1][j] + 1, rows[i][j - 1] + 1, replaced});
            if (i > 1 && j > 1 && first[i - 1] == second[j - 2] && first[i - 2] == second[j - 1]) {
                rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
            }
        }
    }
    return rows.back().back();
}

std::string NearestWord(std::string_view word, const std::vector<std::string>& candidates) {
    constexpr std::size_t kMostMistakes = 2;
    constexpr std::size_t kLongestWord = 64;
    std::string nearest;
    if (word.size() > kLongestWord) {
        return nearest;
    }
    // A word of mistakes only is like nothing.
    std::size_t limit = std::min(kMostMistakes + 1, word.size());
    for (const std::string& candidate : candidates) {
        const std::size_t distance = EditDistance(word, candidate);
        if (distance < limit) {
            limit = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

}  // namespace vantrel
