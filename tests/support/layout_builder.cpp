#include "tests/support/layout_builder.h"

#include <cstdio>

namespace vantrel::test {

namespace {

constexpr std::size_t kSector = 2048;
constexpr std::size_t kSystemIdentifier = 0x8008;
constexpr std::size_t kXaMark = 0x8400;

std::string EntryLine(std::int64_t first, std::int64_t last, const char* mode, const std::string& path) {
    char columns[64];
    std::snprintf(columns, sizeof columns, "%-8lld %-8lld %s  0   \"", static_cast<long long>(first),
                  static_cast<long long>(last), mode);
    return columns + path + "\"";
}

std::string SystemAndCue(ELayoutMedia media) {
    const std::string name = media == ELayoutMedia::Dvd ? "DVD" : media == ELayoutMedia::Cd ? "CD" : "UMD";
    const std::string blanks = "\"                                \"\n";
    std::string text = "[SYS]\nVERSION=1.00\nMEDIA=" + name + "\nTARGET=" + (name == "UMD" ? "PSP" : "PS2") +
                       "\nDISCVERSION=1.00\nDATE=2026/01/02-03:04:05\n[/SYS]\n\n[CUE]\nDISCNAME=" + blanks +
                       "PRODUCER=" + blanks + "COPYRIGHT=" + blanks +
                       "CREATIONDATE=20260102\nPSTYPE=" + (name == "UMD" ? "PSP" : "2") +
                       "\nDISCCODE=" + (name == "UMD" ? "00" : "01") + "\n";
    if (media != ELayoutMedia::Dvd) {
        text +=
            "#Track   Index   Time        Form        Control        LBN\n"
            " 00      00      00:00:00    CDROM2_0    DATA\n"
            " 01      00      00:00:00    CDROM2_0    DATA\n"
            " 01      00      00:00:00    CDROM2_0    DATA           0\n"
            " AA      01      00:00:00    CDROM2_0    DATA           0\n";
    }
    return text + "[/CUE]\n\n[LOC]\n";
}

std::string WithLineEnds(const std::string& text, const std::string& lineEnd) {
    std::string result;
    for (const char c : text) {
        result += c == '\n' ? lineEnd : std::string(1, c);
    }
    return result;
}

void Put(Bytes& bytes, std::size_t offset, const std::string& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        bytes.at(offset + i) = static_cast<std::uint8_t>(text[i]);
    }
}

}  // namespace

std::string LayoutText(const SLayoutDescription& description) {
    const bool isDvd = description.media == ELayoutMedia::Dvd;
    const char* mode = isDvd ? "0.0" : "2.1";
    const std::size_t count = description.entries.size() + (isDvd ? 2 : 1);
    std::string text = SystemAndCue(description.media);
    text += "# the number of entries: " + description.count.value_or(std::to_string(count)) + "\n";
    text += isDvd ? "#Start   End      Mode Fno Source\n" : "#Start   End      Mode Fno Path\n";
    text += EntryLine(0, static_cast<std::int64_t>(description.leadingSectors) - 1, mode, "game.ims") + "\n";
    for (const SLayoutEntry& entry : description.entries) {
        text += EntryLine(entry.first, entry.last, mode, entry.path) + "\n";
    }
    if (isDvd) {
        text += EntryLine(description.volumeLast, description.volumeLast, mode, "game.ims") + " " +
                std::to_string(description.leadingSectors * kSector) + "\n";
    }
    return WithLineEnds(text, description.lineEnd) + description.ending;
}

Bytes LeadingBytes(const SLayoutDescription& description) {
    Bytes bytes = RandomBytes(description.leadingSectors * kSector, 99);
    const bool isDvd = description.media == ELayoutMedia::Dvd;
    Put(bytes, kSystemIdentifier, description.media == ELayoutMedia::Umd ? "PSP GAME   " : "PLAYSTATION");
    Put(bytes, kXaMark, isDvd ? std::string(1, '\0') : "CD-XA001");
    if (isDvd) {
        Bytes trailing(kSector);
        const Bytes tag = RandomBytes(12, 98);
        std::copy(tag.begin(), tag.end(), trailing.begin());
        Write32(trailing, 12, description.volumeLast);
        bytes.insert(bytes.end(), trailing.begin(), trailing.end());
    }
    return bytes;
}

}  // namespace vantrel::test
