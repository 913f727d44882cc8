#include "console/characters.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <string>

namespace vantrel {

namespace {

constexpr char32_t kInvalid = 0xFFFD;

struct SRange {
    char32_t first;
    char32_t last;
};

/// Characters that are drawn over the one before: marks, joiners, variation selectors.
constexpr std::array kCombining = {SRange{0x0300, 0x036F}, SRange{0x0483, 0x0489}, SRange{0x0591, 0x05BD},
                                   SRange{0x0610, 0x061A}, SRange{0x064B, 0x065F}, SRange{0x0900, 0x0902},
                                   SRange{0x093C, 0x093C}, SRange{0x0941, 0x0948}, SRange{0x094D, 0x094D},
                                   SRange{0x0E31, 0x0E31}, SRange{0x0E34, 0x0E3A}, SRange{0x0E47, 0x0E4E},
                                   SRange{0x1AB0, 0x1AFF}, SRange{0x1DC0, 0x1DFF}, SRange{0x200B, 0x200F},
                                   SRange{0x20D0, 0x20FF}, SRange{0x3099, 0x309A}, SRange{0xFE00, 0xFE0F},
                                   SRange{0xFE20, 0xFE2F}, SRange{0xFEFF, 0xFEFF}, SRange{0xE0100, 0xE01EF}};

constexpr std::array kWide = {
    SRange{0x1100, 0x115F},   SRange{0x2E80, 0x303E},   SRange{0x3041, 0x33FF},   SRange{0x3400, 0x4DBF},
    SRange{0x4E00, 0x9FFF},   SRange{0xA000, 0xA4CF},   SRange{0xA960, 0xA97F},   SRange{0xAC00, 0xD7A3},
    SRange{0xF900, 0xFAFF},   SRange{0xFE30, 0xFE6F},   SRange{0xFF00, 0xFF60},   SRange{0xFFE0, 0xFFE6},
    SRange{0x1F300, 0x1F64F}, SRange{0x1F680, 0x1F6FF}, SRange{0x1F900, 0x1F9FF}, SRange{0x20000, 0x3FFFD}};

bool IsIn(const auto& ranges, char32_t code) {
    return std::any_of(ranges.begin(), ranges.end(),
                       [code](const SRange& range) { return code >= range.first && code <= range.last; });
}

/// The length of the sequence that a byte begins; 0 if it begins none.
std::size_t SequenceLength(unsigned char first) {
    return first < 0x80 ? 1 : first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 0;
}

SCharacter FirstOf(std::string_view text) {
    constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = SequenceLength(first);
    if (length == 0 || length > text.size()) {
        return {text.substr(0, 1), kInvalid};
    }
    char32_t code = length == 1 ? first : first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0U) != 0x80U) {
            return {text.substr(0, 1), kInvalid};
        }
        code = code << 6U | (next & 0x3FU);
    }
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < kSmallest[length] || code > 0x10FFFF || isSurrogate) {
        return {text.substr(0, 1), kInvalid};
    }
    return {text.substr(0, length), code};
}

}  // namespace

bool SCharacter::IsPrintable() const {
    const bool isInvalid = code == kInvalid && bytes.size() == 1;
    const bool isControl = code < 0x20 || (code >= 0x7F && code < 0xA0);
    const bool changesDirection = (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
    const bool endsLine = code == 0x2028 || code == 0x2029;
    return !isInvalid && !isControl && !changesDirection && !endsLine;
}

int SCharacter::Columns() const {
    return IsIn(kCombining, code) ? 0 : IsIn(kWide, code) ? 2 : 1;
}

std::vector<SCharacter> CharactersOf(std::string_view text) {
    std::vector<SCharacter> characters;
    while (!text.empty()) {
        characters.push_back(FirstOf(text));
        text.remove_prefix(characters.back().bytes.size());
    }
    return characters;
}

int ColumnsOf(std::string_view text) {
    const std::vector<SCharacter> characters = CharactersOf(text);
    return std::accumulate(characters.begin(), characters.end(), 0,
                           [](int sum, const SCharacter& character) { return sum + character.Columns(); });
}

std::string ShortenedTo(int columns, std::string_view text) {
    constexpr std::string_view kDots = "...";
    if (ColumnsOf(text) <= columns) {
        return std::string(text);
    }
    const auto dots = kDots.substr(0, static_cast<std::size_t>(std::clamp<int>(columns, 0, kDots.size())));
    int left = columns - static_cast<int>(dots.size());
    std::string shortened;
    for (const SCharacter& character : CharactersOf(text)) {
        left -= character.Columns();
        if (left < 0) {
            break;
        }
        shortened += character.bytes;
    }
    return shortened.append(dots);
}

}  // namespace vantrel
