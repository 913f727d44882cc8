// The characters of a text and the columns that they take on a terminal.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantrel {

struct SCharacter {
    std::string_view bytes;  ///< its UTF-8 sequence, or one byte of an invalid one
    char32_t code;           ///< U+FFFD for an invalid byte

    /// Whether it neither controls the terminal nor is an invalid byte.
    bool IsPrintable() const;
    /// 0 for a combining character, 2 for an East Asian wide one or a picture, else 1.
    int Columns() const;
};

/// The characters of a UTF-8 text, which must outlive them.
std::vector<SCharacter> CharactersOf(std::string_view text);

int ColumnsOf(std::string_view text);

/// The text if it takes at most so many columns, else its beginning and "...".
std::string ShortenedTo(int columns, std::string_view text);

}  // namespace vantrel
