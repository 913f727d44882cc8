// Outputs of which every system call fails once: they appear whole, or not at all and with a cause.
#include <gtest/gtest.h>

#include <filesystem>

#include "files/commit_together.h"
#include "files/input_file.h"
#include "files/leftovers.h"
#include "files/output_file.h"
#include "tests/unit/faults/fault_sweep.h"

namespace vantrel::test {
namespace {

namespace fs = std::filesystem;

/// Writes, zeros and copies, each after something that waits to be written. Returns whether all of it was accepted.
bool WriteParts(COutputFile& output, const std::string& source, Bytes& expected) {
    const Bytes content = ReadWhole(source);
    CInputFile input;
    bool accepted = input.Open(source);
    expected.clear();
    const auto write = [&](const Bytes& bytes) {
        accepted = output.Write(bytes) && accepted;
        expected.insert(expected.end(), bytes.begin(), bytes.end());
    };
    const auto writeZeros = [&](std::size_t count) {
        accepted = output.WriteZeros(static_cast<std::int64_t>(count)) && accepted;
        expected.resize(expected.size() + count);
    };
    const auto copy = [&] {
        Bytes buffer(content.size());
        accepted = output.Copy(input, 0, buffer) == buffer.size() && !output.HasFailed() && accepted;
        expected.insert(expected.end(), content.begin(), content.end());
    };
    write(Bytes(10, 1));
    writeZeros(100'000);
    write(Bytes(10, 2));
    writeZeros(100'000);
    write(Bytes(70'000, 3));
    write(Bytes(10, 4));
    write(Bytes(70'000, 5));
    writeZeros(100'000);
    copy();
    write(Bytes(10, 6));
    copy();
    write(Bytes(10, 7));
    writeZeros(100'000);
    accepted = output.Seek(3) && output.WriteZeros(5000) && accepted;
    std::fill_n(expected.begin() + 3, 5000, std::uint8_t{0});
    return accepted;
}

TEST(OutputFaults, CommittedOutputIsWholeAndAnyOtherLeavesNothing) {
    for (const EOutputManner manner : {EOutputManner::InPlace, EOutputManner::CommitNew, EOutputManner::CommitReplace,
                                       EOutputManner::CommitNewFlushed}) {
        for (const SSystem& system : {SSystem(), LimitedSystem()}) {
            SCOPED_TRACE(static_cast<int>(manner));
            const CTestFolder folder;
            const CTestFolder sources;
            WriteWhole(sources / "source", RandomBytes(70'000, 1));
            if (manner == EOutputManner::CommitReplace) {
                WriteText(folder / "game.iso", "older");
            }
            const FolderState before = StateOf(folder);
            bool accepted = false;
            bool committed = false;
            std::string problem;
            Bytes expected;
            const auto run = [&] {
                COutputFile output;
                const bool opened = output.Open(folder / "game.iso", manner);
                accepted = opened && WriteParts(output, sources / "source", expected);
                committed = opened && output.Commit();
                problem = opened ? output.Problem() : "not opened";
            };
            SweepFaults(folder, system, run, [&](const SFault& fault) {
                EXPECT_EQ(problem.empty(), committed) << problem;
                EXPECT_TRUE(accepted || !committed) << "what was not written counts";
                if (committed) {
                    EXPECT_TRUE(ReadWhole(folder / "game.iso") == expected);
                    EXPECT_EQ(folder.Names(), std::vector<std::string>{"game.iso"});
                } else if (manner != EOutputManner::InPlace) {
                    EXPECT_TRUE(StateOf(folder) == before);
                }
                EXPECT_TRUE(committed || fault.number != 0) << problem;
            });
        }
    }
}

/// Outputs below a folder and beside it, one of which replaces an older file.
class JointCommit : public testing::Test {
protected:
    JointCommit() {
        fs::create_directories(m_folder / "game/OLD");
        fs::create_directory(m_folder / "other");
        WriteText(m_folder / "game/OLD/a", "older a");
        WriteText(m_folder / "other/c", "older c");
    }

    /// Returns whether all outputs got their names; otherwise `problem` says why not.
    bool Commit(std::string& problem) const {
        CJointCommit commit;
        const bool committed = commit.Open(m_folder / "game/") && AddAtPlace(commit, m_folder / "game/DIR/b") &&
                               Add(commit, m_folder / "game/OLD/a") && Add(commit, m_folder / "other/c") &&
                               commit.Commit();
        problem = commit.Problem();
        if (committed) {
            commit.Keep();
        }
        return committed;
    }

    static bool AddAtPlace(CJointCommit& commit, const std::string& target) {
        const std::string place = commit.PlaceFor(target);
        COutputFile output;
        return !place.empty() && output.OpenAt(place, target, EOutputManner::CommitReplace) &&
               output.Write(Bytes{'n', 'e', 'w'}) && commit.Add(output);
    }

    static bool Add(CJointCommit& commit, const std::string& target) {
        COutputFile output;
        return output.Open(target, EOutputManner::CommitReplace) && output.Write(Bytes{'n', 'e', 'w'}) &&
               commit.Add(output);
    }

    /// Whether a file with this content is anywhere in the folder.
    bool Holds(const std::string& content) const {
        const FolderState state = StateOf(m_folder);
        return std::any_of(state.begin(), state.end(), [&](const auto& file) { return file.second == content; });
    }

    CTestFolder m_folder;
};

TEST_F(JointCommit, AllAppearOrNone) {
    const FolderState before = StateOf(m_folder);
    FolderState after;
    bool committed = false;
    std::string problem;
    const auto run = [&] { committed = Commit(problem); };
    const std::size_t faults = SweepFaults(m_folder, {}, run, [&](const SFault& fault) {
        if (fault.number == 0) {
            after = StateOf(m_folder);
            for (const char* name : {"game/DIR/b", "game/OLD/a", "other/c"}) {
                EXPECT_EQ(ReadText(m_folder / name), "new") << problem;
            }
            EXPECT_EQ(after.size(), before.size() + 2) << "the folder DIR and its file";
        }
        EXPECT_EQ(StateOf(m_folder), committed ? after : before) << problem;
    });
    EXPECT_GT(faults, 50U);
}

#ifdef _WIN32
/// POSIX systems replace open files.
TEST_F(JointCommit, AnOpenFileIsNotReplaced) {
    const FolderState before = StateOf(m_folder);
    CNativeFile other;
    ASSERT_TRUE(other.Open(m_folder / "game/OLD/a", EOpenMode::Read, ESharing::Anyone));
    std::string problem;
    EXPECT_FALSE(Commit(problem));
    EXPECT_EQ(problem.find(" is now "), std::string::npos) << problem;
    EXPECT_EQ(ReadText(m_folder / "game/OLD/a"), "older a");
    other.Close();
    RemoveLeftovers(m_folder / "game/");  // its second name, which could not be removed either
    EXPECT_EQ(StateOf(m_folder), before);
}
#endif

/// Another process prevents that a replaced file gets its name back: it is kept, and nothing removes it later.
TEST_F(JointCommit, ReplacedFilesAreNeverLost) {
    // The outputs that fail: the one that replaces something, or one after it.
    for (const char* failing : {"game/OLD/a", "other/c"}) {
        int renames = 0;
        SSystem system = LimitedSystem();
        system.beforeCall = [&](const SCall& call) {
            // The last one restores it.
            if (call == SCall{ECall::Rename, "game/OLD/a", false} && ++renames == 2) {
                fs::remove(m_folder / "game/OLD/a");
                fs::create_directories(m_folder / "game/OLD/a/photos");
            }
        };
        std::string problem;
        {
            const CWatchedCalls watch(m_folder.Path(), {{ECall::Rename, failing, false}, 1}, system);
            EXPECT_FALSE(Commit(problem));
            EXPECT_TRUE(watch.HasFailed());
        }
        EXPECT_GE(renames, 2);  // Windows tries again
        for (int run = 0; run < 2; ++run) {
            EXPECT_TRUE(Holds("older a")) << problem;
            EXPECT_TRUE(Holds("older c")) << problem;
            RemoveLeftovers(m_folder / "game/");
            RemoveLeftovers(m_folder / "other/");
        }
        const std::string text = "; the older file is now ";
        const std::size_t place = problem.find(text);
        ASSERT_NE(place, std::string::npos) << problem;
        EXPECT_EQ(ReadText(problem.substr(place + text.size())), "older a");
        fs::remove_all(m_folder / "game/OLD/a");
        WriteText(m_folder / "game/OLD/a", "older a");
        WriteText(m_folder / "other/c", "older c");
    }
}

}  // namespace
}  // namespace vantrel::test
