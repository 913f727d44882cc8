#include "files/utf.h"

#include <array>
#include <cstdint>

namespace vantrel {

namespace {

constexpr std::uint32_t kFirstSupplementary = 0x10000;
constexpr std::uint32_t kHighSurrogate = 0xD800;
constexpr std::uint32_t kLowSurrogate = 0xDC00;
constexpr std::uint32_t kEscapedByte = 0xDC00;

/// A code point and its length in bytes; the length is 0 if the bytes are invalid.
struct SDecoded {
    std::uint32_t codePoint;
    std::size_t length;
};

SDecoded Decode(std::string_view text, std::size_t position) {
    const auto lead = static_cast<std::uint8_t>(text[position]);
    if (lead < 0x80) {
        return {lead, 1};
    }
    const std::size_t length = lead >= 0xF0 && lead < 0xF5 ? 4 : lead >= 0xE0 && lead < 0xF0 ? 3 : lead >= 0xC2 ? 2 : 0;
    if (length == 0 || lead >= 0xF5 || position + length > text.size()) {
        return {0, 0};
    }
    std::uint32_t codePoint = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<std::uint8_t>(text[position + i]);
        if ((next & 0xC0U) != 0x80) {
            return {0, 0};
        }
        codePoint = (codePoint << 6U) | (next & 0x3FU);
    }
    constexpr std::array<std::uint32_t, 5> kSmallest = {0, 0, 0x80, 0x800, kFirstSupplementary};
    const bool surrogate = codePoint >= kHighSurrogate && codePoint < 0xE000;
    if (codePoint < kSmallest[length] || codePoint > 0x10FFFF || surrogate) {
        return {0, 0};
    }
    return {codePoint, length};
}

void Encode(std::uint32_t codePoint, std::string& text) {
    const auto put = [&text](std::uint32_t byte) { text.push_back(static_cast<char>(byte)); };
    const auto follow = [&put](std::uint32_t bits) { put(0x80U | (bits & 0x3FU)); };
    if (codePoint < 0x80) {
        put(codePoint);
    } else if (codePoint < 0x800) {
        put(0xC0U | (codePoint >> 6U));
        follow(codePoint);
    } else if (codePoint < kFirstSupplementary) {
        put(0xE0U | (codePoint >> 12U));
        follow(codePoint >> 6U);
        follow(codePoint);
    } else {
        put(0xF0U | (codePoint >> 18U));
        follow(codePoint >> 12U);
        follow(codePoint >> 6U);
        follow(codePoint);
    }
}

}  // namespace

std::wstring WideOf(std::string_view text) {
    std::wstring wide;
    for (std::size_t i = 0; i < text.size();) {
        const SDecoded next = Decode(text, i);
        if (next.length == 0) {
            wide.push_back(static_cast<wchar_t>(kEscapedByte + static_cast<std::uint8_t>(text[i])));
            ++i;
            continue;
        }
        if (next.codePoint >= kFirstSupplementary) {
            const std::uint32_t bits = next.codePoint - kFirstSupplementary;
            wide.push_back(static_cast<wchar_t>(kHighSurrogate + (bits >> 10U)));
            wide.push_back(static_cast<wchar_t>(kLowSurrogate + (bits & 0x3FFU)));
        } else {
            wide.push_back(static_cast<wchar_t>(next.codePoint));
        }
        i += next.length;
    }
    return wide;
}

std::string Utf8Of(std::wstring_view text) {
    const auto unitAt = [text](std::size_t index) {
        return index < text.size() ? static_cast<std::uint32_t>(text[index]) : 0U;
    };
    std::string narrow;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::uint32_t unit = unitAt(i);
        const std::uint32_t next = unitAt(i + 1);
        if (unit >= kHighSurrogate && unit < kLowSurrogate && next >= kLowSurrogate && next < 0xE000) {
            Encode(kFirstSupplementary + ((unit - kHighSurrogate) << 10U) + (next - kLowSurrogate), narrow);
            ++i;
        } else if (unit >= kEscapedByte + 0x80 && unit <= kEscapedByte + 0xFF) {
            narrow.push_back(static_cast<char>(unit - kEscapedByte));
        } else {
            Encode(unit, narrow);
        }
    }
    return narrow;
}

}  // namespace vantrel
