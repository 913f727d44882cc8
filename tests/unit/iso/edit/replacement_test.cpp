// Which file of an image a path names, and what is refused.
#include "iso/edit/replacement.h"

#include <gtest/gtest.h>

#include "files/refused.h"
#include "tests/support/recording_operation.h"
#include "tests/unit/iso/edit/memory_image.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CMemoryImage;

class Replacement : public testing::Test {
protected:
    Replacement() {
        test::SImageDescription description;
        description.kind = test::EImageKind::Umd;
        description.files = {{"NO_EXTENSION.", test::RandomBytes(100, 1)},
                             {"DIR/SUB/B.BIN", test::RandomBytes(3000, 2)},
                             {"DIR/C.BIN", test::RandomBytes(3000, 2)}};
        m_built = test::BuildImage(description);
        test::WriteWhole(m_folder / "game.iso", m_built.bytes);
        test::WriteText(m_folder / "new", "new content");
    }

    std::string Failure(const std::vector<std::pair<std::string, std::string>>& changes) {
        SReplaceRequest request;
        request.imagePath = m_folder / "game.iso";
        for (const auto& [path, file] : changes) {
            request.replacements.push_back({path, m_folder / file});
        }
        return test::FailureOf([&] { m_report = ReplaceInPlace(request, m_operation); });
    }

    test::CTestFolder m_folder;
    test::CRecordingOperation m_operation;
    test::SBuiltImage m_built;
    SEditReport m_report;
};

TEST_F(Replacement, EverySpellingOfAPath) {
    for (const char* const path : {"DIR/SUB/B.BIN", "dir\\sub\\b.bin", "./Dir//Sub/B.BIN;1", "/DIR/SUB/B.BIN",
                                   "no_extension", "NO_EXTENSION.;1"}) {
        EXPECT_EQ(Failure({{path, "new"}}), "did not fail") << path;
        ASSERT_EQ(m_report.edits.size(), 1U);
        EXPECT_EQ(m_report.unchanged, 2);
    }
}

TEST_F(Replacement, PathsThatNameNoFile) {
    for (const char* const path : {"DIR", "DIR/B.BIN", "SUB/B.BIN", "B", "DIR/SUB/B.BINS"}) {
        EXPECT_EQ(Failure({{path, "new"}}),
                  (m_folder / "game.iso") + " has no file " + path + "; \"vantrel list\" shows its files");
    }
    EXPECT_TRUE(test::ReadWhole(m_folder / "game.iso") == m_built.bytes);
}

TEST_F(Replacement, APathThatSeveralFilesHave) {
    test::SImageDescription description;
    description.kind = test::EImageKind::Umd;
    description.files = {{"NAME", test::RandomBytes(100, 1)}, {"NAME.", test::RandomBytes(200, 2)}};
    test::WriteWhole(m_folder / "game.iso", test::BuildImage(description).bytes);
    EXPECT_EQ(Failure({{"name", "new"}}), (m_folder / "game.iso") + " has several files name");
}

TEST_F(Replacement, APathThatSeveralNamesOfOneFileHave) {
    test::SImageDescription description;
    description.kind = test::EImageKind::Umd;
    description.files = {{"NAME", test::RandomBytes(100, 1)}, {"NAME.", test::RandomBytes(200, 2)}};
    test::SBuiltImage built = test::BuildImage(description);
    test::SetRecord(built.bytes, built.File("\\NAME.").recordOffset, built.File("\\NAME").sector, 100);
    test::WriteWhole(m_folder / "game.iso", built.bytes);
    EXPECT_EQ(Failure({{"name", "new"}}), "did not fail");
    ASSERT_EQ(m_report.edits.size(), 1U);
    const Bytes after = test::ReadWhole(m_folder / "game.iso");
    for (const char* const path : {"\\NAME", "\\NAME."}) {
        EXPECT_EQ(test::Read32(after, built.File(path).recordOffset + 10), 11U) << path;
    }
}

TEST_F(Replacement, OnePathTwice) {
    test::WriteText(m_folder / "same", "new content");
    test::WriteText(m_folder / "other", "other text!");
    EXPECT_EQ(Failure({{"DIR/C.BIN", "new"}, {"dir/c.bin", "other"}}),
              "DIR/C.BIN and dir/c.bin are two names of the same sectors, but their contents differ");
    EXPECT_EQ(Failure({{"DIR/C.BIN", "new"}, {"dir/c.bin", "same"}}), "did not fail");
}

TEST_F(Replacement, FilesThatCannotBeRead) {
    EXPECT_EQ(Failure({{"DIR/C.BIN", "nowhere"}}), "Cannot open " + (m_folder / "nowhere"));
    EXPECT_EQ(Failure({{"DIR/C.BIN", "game.iso"}}), (m_folder / "game.iso") + " is the image itself");
    EXPECT_EQ(Failure({{"DIR/C.BIN", ""}}), m_folder.Path() + " is not a regular file");
}

}  // namespace
}  // namespace vantrel
