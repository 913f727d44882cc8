// What a killed process leaves, and what the next one does with it. Copies of a folder stand for the moment of a kill.
#include "files/leftovers.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "files/commit_together.h"
#include "files/path.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

namespace fs = std::filesystem;
using test::Bytes;

constexpr const char* kTemporary = ".vantrel-0123abcd.tmp";

class Leftovers : public testing::Test {
protected:
    std::string Base() const { return WithSeparator(m_folder.Path()); }

    /// Stages outputs for "a", which exists, and for "DIR/b".
    static void Stage(CStaging& staging, const std::string& base) {
        ASSERT_TRUE(staging.Open(base)) << staging.Problem();
        for (const std::string name : {"a", "DIR/b"}) {
            COutputFile output;
            ASSERT_TRUE(staging.MakeFolders(base + name)) << staging.Problem();
            ASSERT_TRUE(output.OpenAt(staging.PlaceOf(base + name), base + name, EOutputManner::CommitReplace));
            output.Write(Bytes{'n', 'e', 'w'});
            ASSERT_TRUE(staging.Add(output)) << staging.Problem();
        }
    }

    std::string StagingFolder() const {
        for (const std::string& name : m_folder.Names()) {
            if (name.starts_with(".vantrel-")) {
                return WithSeparator(m_folder / name);
            }
        }
        return "";
    }

    test::CTestFolder m_folder;
};

TEST_F(Leftovers, TemporaryFileOfADeadProcessIsRemoved) {
    test::WriteText(m_folder / kTemporary, "unfinished");
    const std::vector<std::string> others = {".vantrel-0123.tmp", ".vantrel-0123ABCD.tmp", ".vantrel-0123abcd.iso",
                                             "game.iso"};
    for (const std::string& name : others) {
        test::WriteText(m_folder / name, "no temporary file of ours");
    }
    RemoveLeftovers(Base());
    EXPECT_EQ(m_folder.Names(), others);
}

#ifndef _WIN32
TEST_F(Leftovers, WhatLinksLeadToStays) {
    const test::CTestFolder photos;
    test::WriteText(photos / "photo", "whose?");
    fs::create_directory_symlink(photos.Path(), m_folder / kTemporary);
    RemoveLeftovers(Base());
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{kTemporary}) << "not even the link is ours";
    fs::remove(m_folder / kTemporary);
    fs::create_directories(m_folder / ".vantrel-0123abcd.tmp/staged");
    fs::create_directory_symlink(photos.Path(), m_folder / ".vantrel-0123abcd.tmp/staged/link");
    test::WriteText(m_folder / ".vantrel-0123abcd.tmp/lock", "");
    RemoveLeftovers(Base());
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{});
    EXPECT_EQ(test::ReadText(photos / "photo"), "whose?");
}
#endif

TEST_F(Leftovers, TemporaryFileOfALivingProcessStays) {
    CNativeFile living;
    ASSERT_TRUE(living.Open(m_folder / kTemporary, EOpenMode::CreateNew, ESharing::Readers));
    ASSERT_EQ(living.TakeLock(), ELock::Taken);
    RemoveLeftovers(Base());
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{kTemporary});
    living.Close();
    RemoveLeftovers(Base());
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{});
}

TEST_F(Leftovers, StagedOutputsOfALivingProcessStay) {
    test::WriteText(m_folder / "a", "older");
    CStaging staging;
    Stage(staging, Base());
    RemoveLeftovers(Base());
    ASSERT_TRUE(staging.Commit(true)) << staging.Problem();
    RemoveLeftovers(Base());
    staging.Keep();
    EXPECT_EQ(test::ReadText(m_folder / "a"), "new");
    EXPECT_EQ(test::ReadText(m_folder / "DIR/b"), "new");
    EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"DIR", "a"}));
}

TEST_F(Leftovers, IncompleteOutputsAreRemoved) {
    test::WriteText(m_folder / "a", "older");
    const test::CTestFolder killed;
    {
        CStaging staging;
        Stage(staging, Base());
        fs::copy(m_folder.Path(), killed.Path(), fs::copy_options::recursive);
    }
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{"a"});
    RemoveLeftovers(WithSeparator(killed.Path()));
    EXPECT_EQ(killed.Names(), std::vector<std::string>{"a"});
    EXPECT_EQ(test::ReadText(killed / "a"), "older");
}

TEST_F(Leftovers, CompleteOutputsGetTheirNames) {
    for (const bool isFirstNamed : {false, true}) {
        const test::CTestFolder killed;
        test::WriteText(killed / "a", "older");
        const std::string path = killed / kTemporary;
        fs::create_directories(path + "/new/DIR");
        test::WriteText(path + "/lock", "");
        test::WriteText(isFirstNamed ? killed / "a" : path + "/new/a", "new");
        test::WriteText(path + "/new/DIR/b", "new");
        test::WriteText(path + "/old-0", "older");
        RemoveLeftovers(WithSeparator(killed.Path()));
        EXPECT_EQ(killed.Names(), (std::vector<std::string>{"DIR", "a"}));
        EXPECT_EQ(test::ReadText(killed / "a"), "new");
        EXPECT_EQ(test::ReadText(killed / "DIR/b"), "new");
    }
}

TEST_F(Leftovers, FolderWithoutALockIsRemovedIfItIsEmpty) {
    fs::create_directory(m_folder / kTemporary);
    RemoveLeftovers(Base());
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{});
    fs::create_directory(m_folder / kTemporary);
    test::WriteText(m_folder / ".vantrel-0123abcd.tmp/photo", "whose?");
    RemoveLeftovers(Base());
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{kTemporary});
}

/// As a power cut may leave it, because names survive independently.
TEST_F(Leftovers, WaitingOutputsWithoutALockAreFinished) {
    fs::create_directories(m_folder / ".vantrel-0123abcd.tmp/new");
    test::WriteText(m_folder / ".vantrel-0123abcd.tmp/new/a", "new");
    test::WriteText(m_folder / ".vantrel-0123abcd.tmp/old-0", "older");
    test::WriteText(m_folder / ".vantrel-0123abcd.tmp/undone-1", "new, but not to keep");
    RemoveLeftovers(Base());
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{"a"});
}

TEST_F(Leftovers, FailedCommitRestoresReplacedFiles) {
    test::WriteText(m_folder / "a", "older");
    fs::create_directories(m_folder / "DIR/b");  // a folder where an output belongs
    {
        CStaging staging;
        Stage(staging, Base());
        EXPECT_FALSE(staging.Commit(true));
        EXPECT_NE(staging.Problem().find("b"), std::string::npos) << staging.Problem();
    }
    EXPECT_EQ(test::ReadText(m_folder / "a"), "older");
    EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"DIR", "a"}));
}

TEST(LiesBelow, TakesPathsBelowTheFolderOnly) {
    EXPECT_TRUE(LiesBelow("", "a"));
    EXPECT_TRUE(LiesBelow("d/", "d/e/f"));
    for (const char* path : {"", "d/", "e/a", "d/../a", "d/e/.."}) {
        EXPECT_FALSE(LiesBelow("d/", path)) << path;
    }
    EXPECT_FALSE(LiesBelow("", "/a"));
    EXPECT_FALSE(LiesBelow("", "../a"));
}

}  // namespace
}  // namespace vantrel
