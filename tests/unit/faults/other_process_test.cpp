// What another process does between two system calls of this one: it looks for leftovers, or keeps a file open.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "files/leftovers.h"
#include "files/native_file.h"
#include "files/output_file.h"
#include "files/staging.h"
#include "files/temporary_folder.h"
#include "files/temporary_path.h"
#include "tests/support/test_folder.h"
#include "tests/support/watched_calls.h"

namespace vantrel::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kTemporary = ".vantrel-0123abcd.tmp";
constexpr const char* kAnyTemporary = ".vantrel-*.tmp";
const std::vector<std::string> kStaging = {"lock", "staged"};

class OtherProcess : public testing::Test {
protected:
    /// A system on which another process acts before the first of these calls.
    template <typename Action>
    SSystem Before(const SCall& call, Action action) {
        SSystem system;
        system.beforeCall = [this, call, action](const SCall& next) {
            if (next == call && !m_hasActed) {
                m_hasActed = true;
                action();
            }
        };
        return system;
    }

    void RemoveAll() const {
        for (const std::string& name : m_folder.Names()) {
            fs::remove_all(m_folder / name);
        }
    }

    void RemoveLock() const {
        for (const std::string& name : m_folder.Names()) {
            fs::remove(m_folder / name + "/lock");
        }
    }

    /// Stages while another process acts before this call. Returns the names that the temporary folders then hold.
    template <typename Action>
    std::vector<std::string> Stage(const SCall& call, Action action) {
        const CWatchedCalls watch(m_folder.Path(), {}, Before(call, action));
        CStaging staging;
        EXPECT_TRUE(staging.Open(m_folder.Path())) << staging.Problem();
        EXPECT_TRUE(m_hasActed);
        std::vector<std::string> names;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(m_folder.Path())) {
            if (entry.path().parent_path() != fs::path(m_folder.Path()).parent_path()) {
                names.push_back(entry.path().filename().string());
            }
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    CTestFolder m_folder;
    bool m_hasActed = false;
};

TEST_F(OtherProcess, RemovesAWaitingFolderBeforeItsLockIsMade) {
    EXPECT_EQ(Stage({ECall::Open, std::string(kAnyTemporary) + "/lock", true}, [this] { RemoveAll(); }), kStaging);
}

TEST_F(OtherProcess, RemovesEveryWaitingFolderBeforeItsLockIsMade) {
    SSystem system;
    int removals = 0;
    system.beforeCall = [this, &removals](const SCall& call) {
        if (call == SCall{ECall::Open, std::string(kAnyTemporary) + "/lock", true}) {
            RemoveAll();
            ++removals;
        }
    };
    const CWatchedCalls watch(m_folder.Path(), {}, system);
    CStaging staging;
    EXPECT_FALSE(staging.Open(m_folder.Path()));
    EXPECT_EQ(staging.Problem().find("Cannot create a folder in " + m_folder.Path() + ": "), 0U) << staging.Problem();
    EXPECT_EQ(removals, 100);
    EXPECT_TRUE(m_folder.Names().empty());
}

TEST_F(OtherProcess, MayHaveTheNameOfATemporaryFolder) {
    const SCall look = {ECall::Look, kAnyTemporary, false};
    {
        const CWatchedCalls watch(m_folder.Path(), {look, 1});
        CTemporaryFolder folder;
        EXPECT_TRUE(folder.MakeIn(m_folder.Path()));
        EXPECT_EQ(FileKindOf(folder.Path()), EFileKind::Folder);
        EXPECT_TRUE(watch.HasFailed());
    }
    EXPECT_TRUE(m_folder.Names().empty());
}

TEST_F(OtherProcess, HasALockThatCannotBeOpened) {
    fs::create_directories(m_folder / kTemporary + "/new");
    WriteText(m_folder / kTemporary + "/new/game.bin", "image");
    WriteText(m_folder / kTemporary + "/lock", "");
    const CWatchedCalls watch(m_folder.Path(), {{ECall::Open, std::string(kAnyTemporary) + "/lock", true}, 1});
    RemoveLeftovers(m_folder.Path());
    EXPECT_TRUE(watch.HasFailed());
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{kTemporary});
    EXPECT_EQ(ReadText(m_folder / kTemporary + "/new/game.bin"), "image");
}

TEST_F(OtherProcess, UsesAFolderThatCouldNotBeRemoved) {
    fs::create_directory(m_folder / kTemporary);
    const SCall removal = {ECall::Remove, std::string(kAnyTemporary) + "/", false};
    const SCall listing = {ECall::Open, std::string(kAnyTemporary) + "/", false};
    const std::string folder = m_folder / kTemporary;
    const SSystem system = Before(listing, [&folder] {
        WriteText(folder + "/lock", "");
        fs::create_directory(folder + "/staged");
        WriteText(folder + "/staged/game.bin", "image");
    });
    const CWatchedCalls watch(m_folder.Path(), {removal, 1}, system);
    RemoveLeftovers(m_folder.Path());
    EXPECT_TRUE(watch.HasFailed());
    EXPECT_TRUE(m_hasActed);
    EXPECT_EQ(ReadText(folder + "/staged/game.bin"), "image");
}

/// A list of names that changes while it is read may lack the lock.
TEST_F(OtherProcess, LocksAFolderWhileItIsListed) {
    const std::string folder = m_folder / kTemporary;
    fs::create_directories(folder + "/staged");
    WriteText(folder + "/staged/game.bin", "image");
    int looks = 0;
    SSystem system;
    system.beforeCall = [&](const SCall& call) {
        if (call == SCall{ECall::Look, std::string(kAnyTemporary) + "/lock", false} && ++looks == 2) {
            WriteText(folder + "/lock", "");
        }
    };
    const CWatchedCalls watch(m_folder.Path(), {}, system);
    RemoveLeftovers(m_folder.Path());
    EXPECT_EQ(looks, 2);
    EXPECT_TRUE(fs::exists(folder + "/staged/game.bin"));
}

TEST_F(OtherProcess, KeepsAnEmptyFolderFromRemoval) {
    fs::create_directory(m_folder / kTemporary);
    const CWatchedCalls watch(m_folder.Path(), {{ECall::Remove, std::string(kAnyTemporary) + "/", false}, 1});
    RemoveLeftovers(m_folder.Path());
    EXPECT_TRUE(watch.HasFailed());
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{kTemporary});
}

TEST_F(OtherProcess, PreventsARemovalForAMoment) {
    fs::create_directory(m_folder / "folder");
    WriteText(m_folder / "file", "content");
    for (const char* name : {"folder", "file"}) {
        const CWatchedCalls watch(m_folder.Path(), {{ECall::Remove, name, false}, 1});
        if (fs::is_directory(m_folder / name)) {
            EXPECT_TRUE(RemoveEmptied(m_folder / name));
        } else {
            RemoveTemporary(m_folder / name);
        }
        EXPECT_TRUE(watch.HasFailed());
        EXPECT_FALSE(fs::exists(m_folder / name));
    }
}

#ifdef _WIN32

/// POSIX systems rename and replace open files.
TEST_F(OtherProcess, KeepsAFileOpenThatIsRenamedOrReplaced) {
    for (const char* opened : {"from", "to"}) {
        WriteText(m_folder / "from", "new");
        WriteText(m_folder / "to", "older");
        CNativeFile other;
        ASSERT_TRUE(other.Open(m_folder / opened, EOpenMode::Read, ESharing::Anyone));
        int tries = 0;
        SSystem system;
        system.beforeCall = [&](const SCall& call) {
            if (call.kind == ECall::Rename && ++tries == 3) {
                other.Close();
            }
        };
        const CWatchedCalls watch(m_folder.Path(), {}, system);
        EXPECT_TRUE(RenameFile(m_folder / "from", m_folder / "to", true)) << opened << ": " << LastFileError();
        EXPECT_EQ(tries, 3);
    }
    EXPECT_EQ(ReadText(m_folder / "to"), "new");
}

TEST_F(OtherProcess, PreventsNoRenamingThatFailsForAnotherReason) {
    WriteText(m_folder / "from", "new");
    WriteText(m_folder / "to", "older");
    const CWatchedCalls watch(m_folder.Path());
    EXPECT_FALSE(RenameFile(m_folder / "from", m_folder / "to", false));
    EXPECT_EQ(watch.Calls().size(), 1U);
}

#else

/// On Windows, the file is open from its creation and cannot be removed.
TEST_F(OtherProcess, RemovesAWaitingFolderBeforeItsLockIsTaken) {
    EXPECT_EQ(Stage({ECall::Lock, std::string(kAnyTemporary) + "/lock", true}, [this] { RemoveAll(); }), kStaging);
}

TEST_F(OtherProcess, RemovesALockBeforeItIsTaken) {
    EXPECT_EQ(Stage({ECall::Lock, std::string(kAnyTemporary) + "/lock", true}, [this] { RemoveLock(); }), kStaging);
}

TEST_F(OtherProcess, LocksAWaitingFolderFirst) {
    CNativeFile other;
    const auto lock = [this, &other] {
        ASSERT_TRUE(other.Open(m_folder / m_folder.Names().at(0) + "/lock", EOpenMode::ReadWrite, ESharing::Anyone));
        ASSERT_EQ(other.TakeLock(), ELock::Taken);
    };
    const std::vector<std::string> names = Stage({ECall::Lock, std::string(kAnyTemporary) + "/lock", true}, lock);
    EXPECT_EQ(names, (std::vector<std::string>{"lock", "lock", "staged"})) << "the first folder is left to the other";
}

TEST_F(OtherProcess, RemovesATemporaryFileBeforeItIsLocked) {
    SSystem system = Before({ECall::Lock, kAnyTemporary, true}, [this] { RemoveAll(); });
    system.vanishingFiles = false;
    const CWatchedCalls watch(m_folder.Path(), {}, system);
    CNativeFile file;
    ASSERT_TRUE(file.OpenTemporary(m_folder / kTemporary, ESharing::Nobody));
    EXPECT_TRUE(m_hasActed);
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{kTemporary});
}

TEST_F(OtherProcess, LocksATemporaryFileFirstAndRemovesItLater) {
    CNativeFile other;
    int opened = 0;
    SSystem system = Before({ECall::Lock, kAnyTemporary, true}, [this, &other] {
        ASSERT_TRUE(other.Open(m_folder / kTemporary, EOpenMode::ReadWrite, ESharing::Anyone));
        ASSERT_EQ(other.TakeLock(), ELock::Taken);
    });
    system.beforeCall = [this, &opened, locks = system.beforeCall](const SCall& call) {
        locks(call);
        opened += call.kind == ECall::Open ? 1 : 0;
        if (call.kind == ECall::Open && opened == 3) {
            RemoveAll();
        }
    };
    system.vanishingFiles = false;
    const CWatchedCalls watch(m_folder.Path(), {}, system);
    CNativeFile file;
    ASSERT_TRUE(file.OpenTemporary(m_folder / kTemporary, ESharing::Nobody)) << LastFileError();
    EXPECT_EQ(opened, 3);
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{kTemporary});
}

/// An output takes another name then.
TEST_F(OtherProcess, LocksATemporaryFileFirstAndKeepsIt) {
    CNativeFile other;
    SSystem system = Before({ECall::Lock, kAnyTemporary, true}, [this, &other] {
        ASSERT_TRUE(other.Open(m_folder / m_folder.Names().at(0), EOpenMode::ReadWrite, ESharing::Anyone));
        ASSERT_EQ(other.TakeLock(), ELock::Taken);
    });
    system.vanishingFiles = false;
    const CWatchedCalls watch(m_folder.Path(), {}, system);
    COutputFile output;
    ASSERT_TRUE(output.Open(m_folder / "game.bin", EOutputManner::CommitNew)) << LastFileError();
    EXPECT_EQ(m_folder.Names().size(), 2U);
    EXPECT_TRUE(output.Write(Bytes{1}) && output.Commit()) << output.Problem();
    EXPECT_EQ(ReadWhole(m_folder / "game.bin"), Bytes{1});
}

TEST_F(OtherProcess, RemovesTheFolderOfATemporaryFile) {
    fs::create_directory(m_folder / "folder");
    SSystem system = Before({ECall::Lock, std::string("folder/") + kAnyTemporary, true}, [this] { RemoveAll(); });
    system.vanishingFiles = false;
    const CWatchedCalls watch(m_folder.Path(), {}, system);
    COutputFile output;
    EXPECT_FALSE(output.Open(m_folder / "folder/game.bin", EOutputManner::CommitNew));
    EXPECT_EQ(LastFileError(), "No such file or directory");
    EXPECT_TRUE(m_hasActed);
}

TEST_F(OtherProcess, RemovesALeftoverFirst) {
    WriteText(m_folder / kTemporary, "leftover");
    const SSystem system = Before({ECall::Lock, kAnyTemporary, true}, [this] { RemoveAll(); });
    const CWatchedCalls watch(m_folder.Path(), {}, system);
    RemoveLeftovers(m_folder.Path());
    EXPECT_TRUE(m_hasActed);
    EXPECT_TRUE(m_folder.Names().empty());
    EXPECT_EQ(watch.OpenCount(), 0U);
}

/// Whose file it is, is unknown.
TEST_F(OtherProcess, MayHaveALeftoverThatCannotBeExamined) {
    const SFault faults[] = {{{ECall::Size, kAnyTemporary, true}, 1}, {{ECall::Look, kAnyTemporary, false}, 3}};
    for (const SFault& fault : faults) {
        WriteText(m_folder / kTemporary, "leftover");
        const CWatchedCalls watch(m_folder.Path(), fault);
        RemoveLeftovers(m_folder.Path());
        EXPECT_TRUE(watch.HasFailed());
        EXPECT_EQ(ReadText(m_folder / kTemporary), "leftover");
        EXPECT_EQ(watch.OpenCount(), 0U);
    }
}

TEST_F(OtherProcess, GivesTheNameOfALeftoverToANewFile) {
    WriteText(m_folder / kTemporary, "leftover");
    const SSystem system = Before({ECall::Lock, kAnyTemporary, true}, [this] {
        WriteText(m_folder / "new", "image");
        fs::rename(m_folder / "new", m_folder / kTemporary);
    });
    const CWatchedCalls watch(m_folder.Path(), {}, system);
    RemoveLeftovers(m_folder.Path());
    EXPECT_TRUE(m_hasActed);
    EXPECT_EQ(ReadText(m_folder / kTemporary), "image");
}

#endif

}  // namespace
}  // namespace vantrel::test
