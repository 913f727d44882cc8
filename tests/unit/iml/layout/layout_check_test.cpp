// Layouts as people edit them by hand, and what the check says.
#include "iml/layout/layout_check.h"

#include <gtest/gtest.h>

#include "files/input_file.h"
#include "tests/support/layout_builder.h"
#include "tests/support/test_folder.h"

namespace vantrel::test {
namespace {

class LayoutCheck : public testing::Test {
protected:
    LayoutCheck() {
        m_layout.entries = {{18, 19, "A.BIN"}, {20, 20, "DIR\\B.BIN"}};
        m_layout.ending = "[/LOC]\r\n";
    }

    static std::string ProblemOf(const std::string& text) {
        const CTestFolder folder;
        WriteText(folder / "game.iml", text);
        CInputFile layout;
        EXPECT_TRUE(layout.Open(folder / "game.iml"));
        return LayoutProblem(layout);
    }

    /// The layout after one change of its text.
    std::string Changed(const std::string& from, const std::string& to) const {
        std::string text = LayoutText(m_layout);
        const std::size_t place = text.find(from);
        EXPECT_NE(place, std::string::npos);
        return text.replace(place, from.size(), to);
    }

    SLayoutDescription m_layout;
};

TEST_F(LayoutCheck, SoundLayouts) {
    for (const ELayoutMedia media : {ELayoutMedia::Cd, ELayoutMedia::Dvd, ELayoutMedia::Umd}) {
        m_layout.media = media;
        for (const char* ending : {"[/LOC]\r\n", "", "\r\n"}) {
            m_layout.ending = ending;
            EXPECT_EQ(ProblemOf(LayoutText(m_layout)), "");
        }
    }
}

TEST_F(LayoutCheck, OtherFilesAreNotChecked) {
    EXPECT_EQ(ProblemOf(""), "");
    EXPECT_EQ(ProblemOf("some text\nof another kind\n"), "");
}

TEST_F(LayoutCheck, OtherFirstLines) {
    EXPECT_EQ(ProblemOf(Changed("[SYS]", "[sys]")), "");
    EXPECT_EQ(ProblemOf(Changed("[SYS]\r\nVERSION=1.00\r\nMEDIA", "MEDIA")), "");  // names no medium at its place
}

TEST_F(LayoutCheck, NumberOfEntriesThatTheRebuildDoesNotFind) {
    const char* const misplaced = "line 24: the number of entries does not follow the tables of this medium";
    EXPECT_EQ(ProblemOf(Changed("DISCNAME=\"", "DISCNAME=\"#")), misplaced);
    EXPECT_EQ(ProblemOf(Changed("MEDIA=CD\r\n", "MEDIA=D\r\n")), misplaced);
    EXPECT_EQ(ProblemOf(Changed("#Track", "Track")), misplaced);
    EXPECT_EQ(ProblemOf(Changed("# the number", "#the number")),
              "line 30: the layout ends before its number of entries");
    EXPECT_EQ(ProblemOf("[SYS]\r\n"), "line 2: the layout ends before its number of entries");
}

TEST_F(LayoutCheck, ByteOrderMark) {
    EXPECT_EQ(ProblemOf("\xEF\xBB\xBF" + LayoutText(m_layout)),
              "line 1: starts with a UTF-8 byte order mark; save the layout without one");
}

TEST_F(LayoutCheck, LineFeedAlone) {
    m_layout.lineEnd = "\n";
    EXPECT_EQ(ProblemOf(LayoutText(m_layout)), "line 1: ends with LF alone; the lines of a layout end with CR LF");
    m_layout.lineEnd = "\r\n";
    EXPECT_EQ(ProblemOf(Changed("A.BIN\"\r\n", "A.BIN\"\n")),
              "line 27: ends with LF alone; the lines of a layout end with CR LF");
}

TEST_F(LayoutCheck, TextBehindTheClosingQuote) {
    EXPECT_EQ(ProblemOf(Changed("A.BIN\"", "A.BIN\"  ")), "line 27: text behind the closing quote");
    for (const ELayoutMedia media : {ELayoutMedia::Cd, ELayoutMedia::Dvd}) {
        m_layout.media = media;
        const int line = media == ELayoutMedia::Cd ? 27 : 22;
        EXPECT_EQ(ProblemOf(Changed("A.BIN\"", "A.BIN\" 7")),
                  "line " + std::to_string(line) + ": text behind the closing quote");
    }
}

TEST_F(LayoutCheck, BrokenEntries) {
    EXPECT_EQ(ProblemOf(Changed("A.BIN\"", "A.BIN")), "line 27: no closing quote");
    EXPECT_EQ(ProblemOf(Changed("A.BIN\"", "\"")), "line 27: no path");
    EXPECT_EQ(ProblemOf(Changed("18       19       2.1", "18 19 2.1")),
              "line 27: no entry: the path has to start with a quote in column 28");
    EXPECT_EQ(ProblemOf(Changed("A.BIN", std::string(2017, 'A'))), "");
    for (const std::size_t length : {2018U, 2019U, 2020U, 5000U}) {
        EXPECT_EQ(ProblemOf(Changed("A.BIN", std::string(length, 'A'))), "line 27: longer than any line of a layout");
    }
    for (const char end : {'\0', '\x1A'}) {
        EXPECT_EQ(ProblemOf(Changed("A.BIN", std::string("A") + end)), "line 27: has a character that ends the text");
    }
}

TEST_F(LayoutCheck, EntriesThatDisagreeWithTheirNumber) {
    m_layout.count = "4";
    EXPECT_EQ(ProblemOf(LayoutText(m_layout)), "line 24: the number of entries is 4, but there are 3");
    m_layout.count = "2";
    EXPECT_EQ(ProblemOf(LayoutText(m_layout)), "line 24: the number of entries is 2, but there are 3");
    m_layout.count = "";
    EXPECT_EQ(ProblemOf(LayoutText(m_layout)), "line 24: the number of entries is 0, but there are 3");
}

}  // namespace
}  // namespace vantrel::test
