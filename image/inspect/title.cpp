#include "image/inspect/title.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "files/byte_order.h"
#include "files/letter_case.h"
#include "files/path.h"

namespace vantrel {

namespace {

constexpr std::size_t kDiscIdLetters = 4;
constexpr std::size_t kDiscIdLength = 9;
/// Both files have a few hundred bytes to a few kilobytes.
constexpr std::int64_t kLongestFile = 65'536;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsUpper(char c) {
    return c >= 'A' && c <= 'Z';
}

/// "SLUS_200.62" or "ULUS10041" as "SLUS-20062"; empty for any other text.
std::string DiscIdOf(std::string_view text) {
    std::string id;
    for (const char c : text) {
        if (c != '_' && c != '-' && c != '.') {
            id += UpperAscii(c);
        }
    }
    const auto digits = id.begin() + static_cast<std::ptrdiff_t>(std::min(kDiscIdLetters, id.size()));
    const bool isDiscId = id.size() == kDiscIdLength && std::all_of(id.begin(), digits, IsUpper) &&
                          std::all_of(digits, id.end(), IsDigit);
    return isDiscId ? id.insert(kDiscIdLetters, 1, '-') : std::string();
}

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t first = std::min(text.find_first_not_of(kBlanks), text.size());
    return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

/// The value of a line "name = value"; no value for any other line.
std::optional<std::string_view> ValueOf(std::string_view line, std::string_view name) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || !EqualIgnoringCase(Trimmed(line.substr(0, equals)), name)) {
        return std::nullopt;
    }
    return Trimmed(line.substr(equals + 1));
}

/// The file name in "cdrom0:\SLUS_200.62;1".
std::string_view ProgramName(std::string_view path) {
    path = path.substr(0, path.find(';'));
    const std::size_t separator = path.find_last_of("\\/:");
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

/// A PARAM.SFO: a header, an index, a table of keys that end with NUL, and a table of values.
class CParamSfo {
public:
    explicit CParamSfo(std::span<const std::uint8_t> file) : m_file(file) {}

    std::string TextOf(std::string_view key) const {
        constexpr std::size_t kHeaderSize = 20;
        constexpr std::size_t kEntrySize = 16;
        constexpr std::uint32_t kMark = 0x46535000;  // "\0PSF"
        if (U32(0) != kMark) {
            return {};
        }
        const std::size_t entries = std::min<std::size_t>(U32(16), m_file.size() / kEntrySize);
        for (std::size_t i = 0; i < entries; ++i) {
            const std::size_t entry = kHeaderSize + i * kEntrySize;
            if (TextAt(std::size_t{U32(8)} + (U32(entry) & 0xFFFFU), m_file.size()) == key) {
                return TextAt(std::size_t{U32(12)} + U32(entry + 12), U32(entry + 4));
            }
        }
        return {};
    }

private:
    /// A little-endian number; 0 beyond the end of the file.
    std::uint32_t U32(std::size_t position) const {
        return position + 4 <= m_file.size() ? LoadLe32(m_file.subspan(position).first<4>()) : 0;
    }

    /// The text at a position, up to NUL, the end of the file, or so many bytes.
    std::string TextAt(std::size_t position, std::size_t length) const {
        const auto rest = m_file.subspan(std::min(position, m_file.size()));
        const auto field = rest.first(std::min(length, rest.size()));
        return {field.begin(), std::find(field.begin(), field.end(), 0)};
    }

    std::span<const std::uint8_t> m_file;
};

/// The content of a file of the image, if it is there and readable.
std::optional<std::vector<std::uint8_t>> ReadFile(CByteSource& image, const SContents& contents,
                                                  std::string_view path) {
    const auto file = std::find_if(contents.files.begin(), contents.files.end(), [path](const SContentFile& candidate) {
        return EqualIgnoringCase(candidate.path, path);
    });
    if (file == contents.files.end() || !file->inside || file->Size() > kLongestFile) {
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(file->extents.front().size));
    bytes.resize(image.ReadAt(file->extents.front().Position(), bytes));
    return bytes;
}

}  // namespace

std::string DiscIdOfSystemCnf(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        for (const char* name : {"BOOT2", "BOOT"}) {
            if (const auto value = ValueOf(line, name)) {
                return DiscIdOf(ProgramName(*value));
            }
        }
    }
    return {};
}

STitle TitleOfParamSfo(std::span<const std::uint8_t> file) {
    const CParamSfo sfo(file);
    return {sfo.TextOf("TITLE"), DiscIdOf(sfo.TextOf("DISC_ID"))};
}

STitle ReadTitle(CByteSource& image, const SContents& contents) {
    if (const auto sfo = ReadFile(image, contents, "PSP_GAME/PARAM.SFO")) {
        return TitleOfParamSfo(*sfo);
    }
    if (const auto settings = ReadFile(image, contents, "SYSTEM.CNF")) {
        return {{}, DiscIdOfSystemCnf({reinterpret_cast<const char*>(settings->data()), settings->size()})};
    }
    return {};
}

}  // namespace vantrel
