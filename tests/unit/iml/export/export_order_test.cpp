// The window's export: the walk, the question for the layout, the layout; and what remains if the user cancels.
#include <gtest/gtest.h>

#include "iml/export/export.h"
#include "tests/support/image_builder.h"
#include "tests/support/recording_operation.h"

namespace vantrel::test {
namespace {

class ExportOrderTest : public testing::Test {
protected:
    ExportOrderTest() {
        SImageDescription description;
        description.files = {{"A.BIN", Bytes(10, 1)}};
        WriteWhole(m_folder / "game.iso", BuildImage(description).bytes);
    }

    bool Export(const ChooseImlPath& choose) { return IsoToIml(m_folder.Path(), "game.iso", choose, m_operation); }

    std::vector<std::string> CallsSince(std::size_t first) const {
        const std::vector<std::string>& calls = m_operation.Calls();
        return {calls.begin() + static_cast<std::ptrdiff_t>(first), calls.end()};
    }

    CTestFolder m_folder;
    CRecordingOperation m_operation;
};

TEST_F(ExportOrderTest, AsksForTheLayoutAfterTheWalk) {
    bool asked = false;
    EXPECT_TRUE(Export([&]() -> std::optional<SChosenLayout> {
        asked = true;
        EXPECT_EQ(m_folder.Names(),
                  (std::vector<std::string>{"game.iso", "game.iso-LBA.TXT", "game.iso.vlt", "temp1.tmp", "tmp.tmp"}));
        EXPECT_TRUE(m_operation.CallsOf("total").empty());
        return SChosenLayout{LayoutPathOf(m_folder.Path(), "chosen"), "D:\\Games\\"};
    }));
    EXPECT_TRUE(asked);
    EXPECT_EQ(m_folder.Names(),
              (std::vector<std::string>{"chosen.iml", "chosen.ims", "game.iso", "game.iso-LBA.TXT", "game.iso.vlt"}));
    EXPECT_NE(ReadText(m_folder / "chosen.iml").find("\"\\Games\\A.BIN\""), std::string::npos);
    const std::vector<std::string>& calls = m_operation.Calls();
    const std::vector<std::string> end = {"pane STATUS Export iml done!", "complete Export iml done!", "completed"};
    EXPECT_EQ(CallsSince(calls.size() - end.size()), end);
}

TEST_F(ExportOrderTest, ACancelledQuestionEndsTheExport) {
    std::size_t callsBefore = 0;
    EXPECT_FALSE(Export([&]() -> std::optional<SChosenLayout> {
        callsBefore = m_operation.Calls().size();
        return std::nullopt;
    }));
    EXPECT_EQ(m_operation.Calls().size(), callsBefore);
    EXPECT_EQ(m_folder.Names(),
              (std::vector<std::string>{"game.iso", "game.iso-LBA.TXT", "game.iso.vlt", "temp1.tmp", "tmp.tmp"}));
}

TEST_F(ExportOrderTest, DoesNotAskForTheLayoutOfARefusedImage) {
    WriteText(m_folder / "game.iso", "no image");
    EXPECT_EQ(FailureOf([&] {
                  Export([&]() -> std::optional<SChosenLayout> {
                      ADD_FAILURE() << "asked";
                      return std::nullopt;
                  });
              }),
              "Code 9999 - invalid file header " + (m_folder / "game.iso"));
}

TEST_F(ExportOrderTest, ACompletionThatEndsEarlyCountsAsAnExport) {
    m_operation.m_completes = false;
    EXPECT_TRUE(Export([&] { return SChosenLayout{m_folder / "chosen.iml", ""}; }));
    EXPECT_EQ(m_operation.Calls().back(), "complete Export iml done!");
}

TEST(LayoutPathTest, AlwaysEndsInIml) {
    EXPECT_EQ(LayoutPathOf("F/", "game"), "F/game.iml");
    EXPECT_EQ(LayoutPathOf("F/", "game.iml"), "F/game.iml");
    EXPECT_EQ(LayoutPathOf("F/", "game.iso"), "F/game.iml") << "an image is never replaced by its layout";
    EXPECT_EQ(LayoutPathOf("F/", "a.b.iml"), "F/a.b.iml");
}

}  // namespace
}  // namespace vantrel::test
