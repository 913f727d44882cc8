#include "iml/layout/layout_reader.h"

#include <array>

namespace vantrel {

namespace {

constexpr std::size_t kCountDigits = 10;
constexpr std::size_t kFirstColumn = 0;
constexpr std::size_t kFirstWidth = 9;
constexpr std::size_t kLastColumn = 9;
constexpr std::size_t kLastWidth = 10;
constexpr std::size_t kQuoteColumn = 27;
constexpr std::size_t kPathColumn = 28;
/// Characters of an entry line that are not its path: the columns before it and the closing quote.
constexpr std::size_t kAroundPath = 29;

}  // namespace

char MediaLetterOf(CByteSource& layout) {
    std::array<std::uint8_t, 1> letter = {};
    layout.ReadAt(kMediaLetterPosition, letter);
    return static_cast<char>(letter[0]);
}

bool IsCdLetter(char letter) {
    return letter == 'C' || letter == '\r' || letter == 'U';
}

bool IsDvdLetter(char letter) {
    return letter == 'D';
}

std::int32_t EntryCountOf(std::string_view text) {
    return DecimalOf(text.substr(0, kCountDigits));
}

std::optional<std::int64_t> FindListHead(CInputFile& layout, int hashes) {
    layout.Seek(0);
    std::array<std::uint8_t, 1> byte = {};
    while (hashes > 0) {
        if (layout.Read(byte) == 0) {
            return std::nullopt;
        }
        hashes -= byte[0] == '#' ? 1 : 0;
    }
    return layout.Position();
}

std::optional<SListHead> ReadListHead(CInputFile& layout, std::int64_t position, CLineBuffer& line) {
    CTextReader text = TextReaderOf(layout, position);
    int character = 0;
    do {
        character = text.Next();
        if (character == CTextReader::kEnd) {
            return std::nullopt;
        }
    } while (character != ':');
    text.Next();
    SListHead head;
    if (text.ReadLine(line) && !line.Text().empty()) {
        head.entries = EntryCountOf(line.Text());
        if (text.ReadLine(line) && !line.Text().empty() && text.ReadLine(line) && !line.Text().empty()) {
            head.leadingLast = DecimalOf(line.Piece(kLastColumn, kLastWidth));
            const std::optional<SListedFile> leading = LooksLikeEntry(line) ? ListedFileOf(line) : std::nullopt;
            head.leadingName = leading ? leading->path : std::string();
        }
    }
    head.entriesPosition = text.Position();
    return head;
}

std::string LeadingNameIn(CInputFile& layout) {
    const std::optional<std::int64_t> position = FindListHead(layout, ShapeOf(MediaLetterOf(layout)).hashes);
    CLineBuffer line;
    const std::optional<SListHead> head = position ? ReadListHead(layout, *position, line) : std::nullopt;
    // A path would lead away from the layout.
    return head && head->leadingName.find_first_of("\\/:") == std::string::npos ? head->leadingName : std::string();
}

std::optional<SListedFile> ListedFileOf(const CLineBuffer& line) {
    // For a short line the difference wraps, and the path is the rest of the buffer.
    const std::size_t length = line.Text().size() - kAroundPath;
    if (length == 0) {
        return std::nullopt;
    }
    SListedFile file;
    file.first = DecimalOf(line.Piece(kFirstColumn, kFirstWidth));
    file.last = DecimalOf(line.Piece(kLastColumn, kLastWidth));
    file.path = line.Piece(kPathColumn, length);
    return file;
}

bool LooksLikeEntry(const CLineBuffer& line) {
    const std::string_view text = line.Text();
    return text.size() >= kAroundPath && text[kQuoteColumn] == '"';
}

CTextReader TextReaderOf(CInputFile& file, std::int64_t start) {
    return CTextReader(
        [&file](std::int64_t position, std::span<std::uint8_t> buffer) { return file.ReadAt(position, buffer); },
        start);
}

}  // namespace vantrel
