// What a layout lists, and where its leading structures are.
#include "iml/layout/layout_summary.h"

#include <gtest/gtest.h>

#include "files/refused.h"
#include "tests/support/image_builder.h"
#include "tests/support/layout_builder.h"

namespace vantrel::test {
namespace {

TEST(FindLeadingStructuresTest, TheNamedOneComesFirst) {
    const CTestFolder folder;
    SLayoutDescription layout;
    std::string text = LayoutText(layout);
    WriteText(folder / "slus_200.62.iml", text.replace(text.find("game.ims"), 8, "own.ims"));
    const auto found = [&] { return FindLeadingStructures(folder / "slus_200.62.iml"); };
    EXPECT_EQ(found(), folder / "slus_200.ims");
    WriteText(folder / "slus_200.62.ims", "x");
    EXPECT_EQ(found(), folder / "slus_200.62.ims");
    WriteText(folder / "slus_200.ims", "x");
    EXPECT_EQ(found(), folder / "slus_200.ims");
    WriteText(folder / "own.ims", "x");
    EXPECT_EQ(found(), folder / "own.ims");
}

TEST(SummarizeLayoutTest, SharedPlacesHaveTheirWholeRange) {
    const CTestFolder folder;
    SImageDescription description;
    description.files = {{"A.BIN", RandomBytes(5000, 1)}, {"B.BIN", RandomBytes(5000, 1)}};
    const SBuiltImage built = BuildImage(description);
    Bytes image = built.bytes;
    std::copy_n(image.begin() + static_cast<std::ptrdiff_t>(built.File("\\A.BIN").recordOffset) + 2, 16,
                image.begin() + static_cast<std::ptrdiff_t>(built.File("\\B.BIN").recordOffset) + 2);
    image.resize(std::size_t{built.headerEnd} * kImageSector);
    WriteWhole(folder / "game.ims", image);
    const std::int64_t first = built.File("\\A.BIN").sector;
    SLayoutDescription layout;
    layout.leadingSectors = built.headerEnd;
    layout.entries = {{first, first + 2, "A.BIN"}, {first + 2, first + 2, "B.BIN"}, {first + 9, first + 9, "C.BIN"}};
    WriteText(folder / "game.iml", LayoutText(layout));
    for (const char* name : {"A.BIN", "B.BIN", "C.BIN"}) {
        WriteWhole(folder / name, RandomBytes(5000, 1));
    }
    const SLayoutSummary summary = SummarizeLayout(folder / "game.iml", folder.Path());
    ASSERT_EQ(summary.files.size(), 3U);
    EXPECT_TRUE(summary.files[0].Fits());
    EXPECT_TRUE(summary.files[1].Fits());
    EXPECT_FALSE(summary.files[2].Fits());
}

/// The summary's media, entries and listed files of a layout with the given change, or why it is refused.
std::string SummaryOf(const std::string& from, const std::string& to) {
    const CTestFolder folder;
    SLayoutDescription layout;
    layout.entries = {{18, 19, "A.BIN"}, {20, 20, "B.BIN"}};
    std::string text = LayoutText(layout);
    const std::size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos);
    WriteText(folder / "game.iml", text.replace(place, from.size(), to));
    try {
        const SLayoutSummary summary = SummarizeLayout(folder / "game.iml", folder.Path());
        return summary.media + " " + std::to_string(summary.entries) + " " + std::to_string(summary.files.size());
    } catch (const CRefused& refused) {
        return std::string(refused.what()).substr((folder / "game.iml").size());
    }
}

TEST(SummarizeLayoutTest, ListsTheEntriesBeforeADamagedOne) {
    EXPECT_EQ(SummaryOf("VERSION", "VERSION"), "CD 3 2");
    EXPECT_EQ(SummaryOf("MEDIA=CD", "MEDIA=\r\n"), "CD 3 2");
    EXPECT_EQ(SummaryOf("\"A.BIN", " A.BIN"), "CD 3 0");
    EXPECT_EQ(SummaryOf("\"B.BIN", " B.BIN"), "CD 3 1");
}

TEST(SummarizeLayoutTest, LayoutsWithoutAListAreRefused) {
    EXPECT_EQ(SummaryOf("entries: 3", "entries. 3"), ", line 31: the layout ends before its number of entries");
    EXPECT_EQ(SummaryOf("entries: 3", "entries: "), ", line 24: the number of entries is 0, but there are 3");
    EXPECT_EQ(SummaryOf("entries: 3", "entries: 0"), ", line 24: the number of entries is 0, but there are 3");
    EXPECT_EQ(SummaryOf("MEDIA=CD", "MEDIA=XX"), ": the layout names no known medium or no number of entries");
}

}  // namespace
}  // namespace vantrel::test
