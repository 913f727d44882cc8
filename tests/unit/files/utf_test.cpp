// UTF-8 and UTF-16: every text survives the conversion, valid or not.
#include "files/utf.h"

#include <gtest/gtest.h>

namespace vantrel {
namespace {

TEST(Utf, KnownCodePoints) {
    EXPECT_EQ(WideOf("a\xC3\xA9\xE2\x82\xAC"), std::wstring(L"a\u00E9\u20AC"));
    const std::wstring pair = WideOf("\xF0\x9F\x98\x80");
    ASSERT_EQ(pair.size(), 2U);
    EXPECT_EQ(static_cast<unsigned>(pair[0]), 0xD83DU);
    EXPECT_EQ(static_cast<unsigned>(pair[1]), 0xDE00U);
}

TEST(Utf, InvalidBytesRoundTrip) {
    for (const char* text :
         {"\xFF\xFE", "\x80", "\xC0\x80", "\xED\xA0\x80", "\xF5\x80\x80\x80", "caf\xE9.iso", "\xE2\x82"}) {
        EXPECT_EQ(Utf8Of(WideOf(text)), text);
    }
}

/// A high surrogate without a low one is a character of its own, as in names of other systems.
TEST(Utf, UnpairedSurrogatesStay) {
    for (const unsigned next : {0x41U, 0xDBFFU, 0xE000U}) {
        const std::wstring text = {L'a', static_cast<wchar_t>(0xD83D), static_cast<wchar_t>(next)};
        const std::string narrow = Utf8Of(text);
        EXPECT_EQ(narrow.substr(0, 4), "a\xED\xA0\xBD") << next;
        EXPECT_EQ(narrow.size(), next == 0x41 ? 5U : 7U) << next;
    }
    EXPECT_EQ(Utf8Of(std::wstring{static_cast<wchar_t>(0xD83D), static_cast<wchar_t>(0xDFFF)}), "\xF0\x9F\x9F\xBF");
}

/// Each byte of an invalid sequence becomes a unit of its own.
TEST(Utf, SequencesAtTheLimitsOfValidOnes) {
    for (const char* text : {"\xC2\x80", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80"}) {
        EXPECT_EQ(WideOf(text).size(), 1U);
    }
    for (const char* text : {"\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(WideOf(text).size(), 2U);
    }
    for (const std::string text :
         {"\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xED\xBF\xBF", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80"}) {
        EXPECT_EQ(WideOf(text).size(), text.size());
    }
}

TEST(Utf, CodePointsOfEveryLengthRoundTrip) {
    for (const char* text :
         {"", "\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(Utf8Of(WideOf(text)), text);
    }
}

}  // namespace
}  // namespace vantrel
