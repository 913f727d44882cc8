#include "raw/cue_reader.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "files/path.h"
#include "files/refused.h"
#include "operation/text.h"
#include "raw/raw_sector.h"

namespace vantrel {

namespace {

constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
/// FILE is expected within this many bytes, behind remarks and titles.
constexpr std::size_t kExaminedSize = 1U << 16U;

/// Commands that say nothing about the place of data, and may stand before the first FILE.
constexpr std::array<std::string_view, 10> kIgnored = {"REM",        "CATALOG", "CDTEXTFILE", "TITLE",    "PERFORMER",
                                                       "SONGWRITER", "ISRC",    "FLAGS",      "COMPOSER", "ARRANGER"};

bool IsIgnored(std::string_view command) {
    return std::any_of(kIgnored.begin(), kIgnored.end(),
                       [command](std::string_view known) { return EqualIgnoringCase(command, known); });
}

std::string_view Trimmed(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

/// Removes the first line from a text and returns it without blanks around it.
std::string_view TakeLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return Trimmed(line);
}

/// Removes the first word from a line and returns it.
std::string_view TakeWord(std::string_view& line) {
    const std::string_view word = line.substr(0, line.find_first_of(kBlanks));
    line = Trimmed(line.substr(word.size()));
    return word;
}

void SkipByteOrderMark(std::string_view& text) {
    if (text.starts_with(kByteOrderMark)) {
        text.remove_prefix(kByteOrderMark.size());
    }
}

/// One or two digits; nullopt for anything else.
std::optional<std::uint32_t> ShortNumber(std::string_view text) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || text.size() > 2 || error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return number;
}

/// "mm:ss:ff" in frames.
std::optional<std::uint32_t> FramesOf(std::string_view text) {
    if (text.size() != 8 || text[2] != ':' || text[5] != ':') {
        return std::nullopt;
    }
    const auto minutes = ShortNumber(text.substr(0, 2));
    const auto seconds = ShortNumber(text.substr(3, 2));
    const auto frames = ShortNumber(text.substr(6, 2));
    if (!minutes || !seconds || !frames || *seconds >= kSecondsPerMinute || *frames >= kFramesPerSecond) {
        return std::nullopt;
    }
    return (*minutes * kSecondsPerMinute + *seconds) * kFramesPerSecond + *frames;
}

class CCueParser {
public:
    explicit CCueParser(const std::string& path) : m_path(path) {}

    SCueSheet Parse(std::string_view text) {
        SkipByteOrderMark(text);
        while (!text.empty()) {
            ++m_line;
            std::string_view line = TakeLine(text);
            const std::string_view command = TakeWord(line);
            if (!command.empty() && !IsIgnored(command)) {
                Obey(command, line);
            }
        }
        FinishTrack();
        if (m_sheet.tracks.empty()) {
            Refuse("the sheet has no track");
        }
        return std::move(m_sheet);
    }

private:
    [[noreturn]] void Refuse(const std::string& cause) const { RefuseAt(m_line, cause); }
    [[noreturn]] void RefuseAt(int line, const std::string& cause) const {
        throw CRefused(Format("%s:%d: %s", m_path.c_str(), line, cause.c_str()));
    }

    void Obey(std::string_view command, std::string_view arguments) {
        if (EqualIgnoringCase(command, "FILE")) {
            ReadFile(arguments);
        } else if (EqualIgnoringCase(command, "TRACK")) {
            ReadTrack(arguments);
        } else if (EqualIgnoringCase(command, "INDEX")) {
            ReadIndex(arguments);
        } else if (EqualIgnoringCase(command, "PREGAP")) {
            CheckGap(arguments);
            CurrentTrack().hasPregap = true;
        } else if (EqualIgnoringCase(command, "POSTGAP")) {
            CheckGap(arguments);
        } else {
            Refuse("unknown command " + std::string(command));
        }
    }

    /// The name is quoted, or is everything before the last word.
    void ReadFile(std::string_view arguments) {
        const bool quoted = arguments.starts_with('"');
        const std::size_t nameEnd = quoted ? arguments.find('"', 1) : arguments.find_last_of(kBlanks);
        if (nameEnd == std::string_view::npos) {
            Refuse("FILE needs a name and a type");
        }
        const std::string_view name = quoted ? arguments.substr(1, nameEnd - 1) : Trimmed(arguments.substr(0, nameEnd));
        const std::string_view type = Trimmed(arguments.substr(nameEnd + 1));
        if (name.empty() || type.empty() || type.find_first_of(kBlanks) != std::string_view::npos) {
            Refuse("FILE needs a name and a type");
        }
        m_sheet.files.push_back({std::string(name), EqualIgnoringCase(type, "BINARY")});
        m_lastFrame = 0;
    }

    void ReadTrack(std::string_view arguments) {
        FinishTrack();
        if (m_sheet.files.empty()) {
            Refuse("TRACK before the first FILE");
        }
        const auto number = ShortNumber(TakeWord(arguments));
        if (!number || *number == 0) {
            Refuse("TRACK needs a number from 01 to 99 and a mode");
        }
        if (!m_sheet.tracks.empty() && *number <= m_sheet.tracks.back().number) {
            Refuse("track numbers must ascend");
        }
        m_sheet.tracks.push_back({*number, ModeOf(arguments), m_line, false, std::nullopt, std::nullopt});
    }

    ETrackMode ModeOf(std::string_view name) const {
        for (const ETrackMode mode : {ETrackMode::Audio, ETrackMode::Mode1Data, ETrackMode::Mode1Whole,
                                      ETrackMode::Mode2Data, ETrackMode::Mode2WithoutSync, ETrackMode::Mode2Whole}) {
            if (EqualIgnoringCase(name, NameOf(mode))) {
                return mode;
            }
        }
        Refuse("unknown track mode \"" + std::string(name) + "\"");
    }

    void ReadIndex(std::string_view arguments) {
        SCueTrack& track = CurrentTrack();
        const auto number = ShortNumber(TakeWord(arguments));
        const auto frame = FramesOf(arguments);
        if (!number || !frame) {
            Refuse("INDEX needs a number from 00 to 99 and a position mm:ss:ff");
        }
        if (*frame < m_lastFrame) {
            Refuse("the position lies before an earlier one of the same file");
        }
        if (m_lastIndex && *number <= *m_lastIndex) {
            Refuse("the numbers of a track's INDEX lines must ascend");
        }
        m_lastFrame = *frame;
        m_lastIndex = number;
        if (*number <= 1) {
            (*number == 0 ? track.pregap : track.start) = SCueIndex{m_sheet.files.size() - 1, *frame};
        }
    }

    void CheckGap(std::string_view length) const {
        if (!FramesOf(length)) {
            Refuse("a gap needs a length mm:ss:ff");
        }
    }

    SCueTrack& CurrentTrack() {
        if (m_sheet.tracks.empty()) {
            Refuse("the line belongs below a TRACK");
        }
        return m_sheet.tracks.back();
    }

    /// Checks the track that the latest lines described.
    void FinishTrack() {
        m_lastIndex.reset();
        if (m_sheet.tracks.empty()) {
            return;
        }
        const SCueTrack& track = m_sheet.tracks.back();
        if (!track.start) {
            RefuseAt(track.line, "the track has no INDEX 01");
        }
        if (track.mode != ETrackMode::Audio && !m_sheet.files[track.start->file].binary) {
            RefuseAt(track.line, "data tracks need a FILE of the type BINARY");
        }
    }

    const std::string& m_path;
    SCueSheet m_sheet;
    int m_line = 0;
    std::uint32_t m_lastFrame = 0;             ///< of the current file
    std::optional<std::uint32_t> m_lastIndex;  ///< of the current track
};

}  // namespace

bool IsCueSheet(CByteSource& file) {
    std::string beginning(kExaminedSize, '\0');
    beginning.resize(file.ReadAt(0, {reinterpret_cast<std::uint8_t*>(beginning.data()), beginning.size()}));
    std::string_view text = beginning;
    SkipByteOrderMark(text);
    while (!text.empty()) {
        std::string_view line = TakeLine(text);
        const std::string_view command = TakeWord(line);
        if (!command.empty() && !IsIgnored(command)) {
            return EqualIgnoringCase(command, "FILE");
        }
    }
    return false;
}

SCueSheet ParseCueSheet(std::string_view text, const std::string& path) {
    return CCueParser(path).Parse(text);
}

}  // namespace vantrel
