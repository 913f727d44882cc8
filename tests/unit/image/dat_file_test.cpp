// Disc databases.
#include "image/inspect/dat_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "files/refused.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

/// Why a text is no database; empty if it is one.
std::string ProblemOf(const std::string& text) {
    const test::CTestFolder folder;
    test::WriteText(folder / "a.dat", text);
    try {
        CDatFile(folder / "a.dat");
        return "";
    } catch (const CRefused& refusal) {
        return refusal.what();
    }
}

TEST(DatFile, FindsEntriesBySizeAndSums) {
    const test::CTestFolder folder;
    test::WriteText(folder / "a.dat",
                    "<?xml version=\"1.0\"?>\n<!DOCTYPE datafile>\n<datafile><header><name>x</name></header>"
                    "<game name=\"One &amp; two\"><rom name=\"one.cue\" size=\"5\" crc=\"0000000A\"/>"
                    "<rom name=\"one.bin\" size=\"4096\" crc=\"C71C0011\" md5=\"AB\" sha1=\"CD\"/></game>"
                    "<game name=\"Md5\"><rom name=\"md5\" size=\"8\" md5=\"AB\"/></game>"
                    "<game name=\"Sha1\"><rom name=\"sha1\" size=\"9\" sha1=\"CD\"/></game>"
                    "<machine name=\"Bare\"><rom name=\"bare\" size=\"7\"/></machine></datafile>");
    const CDatFile dat(folder / "a.dat");
    const SDatEntry* const entry = dat.Find({4096, "c71c0011", "ab", "cd"});
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->game, "One & two");
    EXPECT_EQ(entry->file, "one.bin");
    EXPECT_NE(dat.Find({5, "0000000a", "any", "any"}), nullptr) << "the entry has no other sums";
    EXPECT_EQ(dat.Find({4096, "c71c0011", "ab", "ce"}), nullptr);
    EXPECT_EQ(dat.Find({4096, "c71c0011", "ac", "cd"}), nullptr);
    EXPECT_EQ(dat.Find({4096, "c71c0012", "ab", "cd"}), nullptr);
    EXPECT_EQ(dat.Find({4097, "c71c0011", "ab", "cd"}), nullptr);
    for (const auto& [size, game] : {std::pair{8, "Md5"}, std::pair{9, "Sha1"}}) {
        const SDatEntry* const partial = dat.Find({size, "any", "ab", "cd"});
        ASSERT_NE(partial, nullptr) << game;
        EXPECT_EQ(partial->game, game);
        EXPECT_EQ(dat.Find({size, "any", "ff", "ff"}), nullptr) << game;
    }
    EXPECT_EQ(dat.Find({7, "", "", ""}), nullptr) << "an entry without any sum";
}

TEST(DatFile, RefusesEverythingElse) {
    EXPECT_THAT(ProblemOf(""), testing::HasSubstr("a.dat: not a disc database"));
    EXPECT_THAT(ProblemOf("<datafile>"), testing::HasSubstr("not a disc database"));
    EXPECT_THAT(ProblemOf("<other/>"), testing::HasSubstr("it has no element datafile"));
    EXPECT_THAT(ProblemOf("<datafile><game"), testing::HasSubstr("not a disc database"));
    EXPECT_THAT(ProblemOf("<"), testing::HasSubstr("not a disc database"));
    EXPECT_THAT(ProblemOf(std::string("<datafile\0>", 11)), testing::HasSubstr("not a disc database"));
    EXPECT_EQ(ProblemOf("<datafile/>"), "");
}

TEST(DatFile, RefusesAFileThatIsMuchTooLong) {
    const test::CTestFolder folder;
    const std::string path = folder / "a.dat";
    test::WriteText(path, "<datafile/>");
    std::filesystem::resize_file(path, (1U << 28U) + 1);
    EXPECT_THAT([&] { CDatFile{path}; },
                testing::ThrowsMessage<CRefused>(path + ": the file is too large for a disc database"));
}

TEST(DatFile, SurvivesDeepNesting) {
    std::string deep;
    for (int i = 0; i < 1'000'000; ++i) {
        deep += "<a>";
    }
    EXPECT_THAT(ProblemOf(deep), testing::HasSubstr("elements are nested too deeply"));
}

}  // namespace
}  // namespace vantrel
