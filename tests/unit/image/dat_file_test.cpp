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

std::string Repeated(const std::string& text, int times) {
    std::string repeated;
    for (int i = 0; i < times; ++i) {
        repeated += text;
    }
    return repeated;
}

TEST(DatFile, RefusesDeepNesting) {
    for (const std::string element :
         {"<a>", "<a b='</'>", "<a b='/>'>", "<a><!--</a>-->", "<a><![CDATA[</a>]]>", "<a><?p </a>?>"}) {
        EXPECT_THAT(ProblemOf("<datafile>" + Repeated(element, 1'000'000)),
                    testing::HasSubstr("not a disc database: elements are nested too deeply"))
            << element;
    }
}

TEST(DatFile, AcceptsManyElementsThatAreNotNested) {
    EXPECT_EQ(ProblemOf("<datafile>" + Repeated("<a><b><c/></b></a>", 100'000) + "</datafile>"), "");
    EXPECT_EQ(ProblemOf(Repeated("<datafile>", 100) + Repeated("</datafile>", 100)), "");
}

}  // namespace
}  // namespace vantrel
