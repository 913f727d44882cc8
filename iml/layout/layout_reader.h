// Reading of the layout's list of files, for the rebuilds.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "files/input_file.h"
#include "iml/layout/text_reader.h"

namespace vantrel {

/// Position of the first letter of the media word in a layout with CR LF line ends.
inline constexpr std::int64_t kMediaLetterPosition = 27;

/// The letter there; 0 when the layout is too short.
char MediaLetterOf(CInputFile& layout);
/// Whether the letter stands for a layout that is rebuilt as a CD ('C', 'U' or a carriage return) or as a DVD ('D').
bool IsCdLetter(char letter);
bool IsDvdLetter(char letter);

/// The list's beginning: what its count line says and where its entries start.
struct SListHead {
    std::int32_t entries = 0;          ///< The count, with the entry of the leading structures.
    std::int32_t leadingLast = -1;     ///< Last sector of that entry; −1 when the list has none.
    std::int64_t entriesPosition = 0;  ///< Position in bytes of the line behind that entry.
};

/// Position behind the `hashes`-th '#' of the layout; nothing when there are fewer.
std::optional<std::int64_t> FindListHead(CInputFile& layout, int hashes);

/// Reads the count line whose '#' ends at `position`, the column header and the entry of the leading structures; an
/// empty line ends the reading early. Nothing when no ':' follows.
std::optional<SListHead> ReadListHead(CInputFile& layout, std::int64_t position, CLineBuffer& line);

/// One placed file.
struct SListedFile {
    std::int32_t first = 0;
    std::int32_t last = 0;
    std::string path;
};

/// The file that an entry line describes by its fixed columns: the first sector in the first 9 characters, the last one
/// in the next 10, and the path from behind the quote in column 27 up to a quote that ends the line. Nothing when the
/// line ends right behind that first quote's partner, which ends the list. Characters that a line is too short to have
/// are those of earlier lines in the same buffer.
std::optional<SListedFile> ListedFileOf(const CLineBuffer& line);

/// Whether a line has the length and the opening quote of an entry.
bool LooksLikeEntry(const CLineBuffer& line);

/// A text reader over an open file.
CTextReader TextOf(CInputFile& file, std::int64_t start);

}  // namespace vantrel
