// Reads the list of files of a layout.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "files/input_file.h"
#include "iml/layout/text_reader.h"

namespace vantrel {

/// Position of the first letter of the media word in a layout with CR LF line ends.
inline constexpr std::int64_t kMediaLetterPosition = 27;

/// The letter there; 0 if the layout is too short.
char MediaLetterOf(CByteSource& layout);
/// Whether the letter stands for a layout that is rebuilt as a CD ('C', 'U' or a carriage return) or as a DVD ('D').
bool IsCdLetter(char letter);
bool IsDvdLetter(char letter);

/// The two shapes of layout.
struct SLayoutShape {
    bool isDvd;
    int hashes;             ///< Number of the '#' that starts the count line.
    std::int32_t unplaced;  ///< Entries of the list that are no files.
};

inline constexpr SLayoutShape kCdShape = {false, 2, 1};
inline constexpr SLayoutShape kDvdShape = {true, 1, 2};

/// The shape of a layout with this media letter.
inline const SLayoutShape& ShapeOf(char letter) {
    return IsDvdLetter(letter) ? kDvdShape : kCdShape;
}

/// The number in a count line, read from the text behind "entries: ": at most 10 characters count.
std::int32_t EntryCountOf(std::string_view text);

/// The start of the list.
struct SListHead {
    std::int32_t entries = 0;          ///< The count, with the entry of the leading structures.
    std::int32_t leadingLast = -1;     ///< Last sector of that entry; -1 if the list has none.
    std::string leadingName;           ///< The file that this entry names; empty if unknown.
    std::int64_t entriesPosition = 0;  ///< Position in bytes of the line behind that entry.
};

/// Position behind the `hashes`-th '#' of the layout; nothing if there are fewer.
std::optional<std::int64_t> FindListHead(CInputFile& layout, int hashes);

/// Reads the count line whose '#' ends at `position`, the column header and the entry of the leading structures. An
/// empty line ends the reading early. Nothing if no ':' follows.
std::optional<SListHead> ReadListHead(CInputFile& layout, std::int64_t position, CLineBuffer& line);

/// The name of the ".ims" file in the entry of the leading structures; empty if the layout cannot be read that far.
std::string LeadingNameIn(CInputFile& layout);

/// A file in the list.
struct SListedFile {
    std::int32_t first = 0;  ///< sectors, both inclusive
    std::int32_t last = 0;
    std::string path;
};

/// The file of an entry line, by fixed columns: the first sector in the first 9 characters, the last sector in the next
/// 10, and the path between the quote in column 27 and the quote that ends the line. Nothing for an empty path, which
/// ends the list. If the line is too short for a column, characters of earlier lines in the same buffer take their
/// place.
std::optional<SListedFile> ListedFileOf(const CLineBuffer& line);

/// Whether a line is long enough for an entry and has its opening quote.
bool LooksLikeEntry(const CLineBuffer& line);

/// A text reader over an open file.
CTextReader TextReaderOf(CInputFile& file, std::int64_t start);

}  // namespace vantrel
