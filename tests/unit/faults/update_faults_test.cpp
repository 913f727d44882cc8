// Changes in place of which every system call fails once, also while a change is undone: the file is old or new, or its
// journal still restores it.
#include <gtest/gtest.h>

#include "files/refused.h"
#include "files/update_file.h"
#include "tests/unit/faults/fault_sweep.h"

namespace vantrel::test {
namespace {

constexpr const char* kJournal = ".game.iso.vantrel-undo";

struct SPiece {
    std::size_t position;
    std::size_t length;
};

/// Two overlapping pieces, and one across the end of the file. Each of them changes an even number of sectors, because
/// a write that fails stops in its middle, but no disk writes half a sector.
constexpr SPiece kPieces[] = {{100, 600}, {120, 600}, {2100, 4044}};
constexpr std::size_t kNewLength = 6144;

/// The parameter is the length of the file before the change.
class UpdateFaults : public testing::TestWithParam<std::size_t> {
protected:
    UpdateFaults() { WriteWhole(m_path, m_before); }

    /// Every reading writes what was collected before.
    bool Change(CUpdateFile& file) const {
        bool changed = true;
        for (const auto& [position, length] : kPieces) {
            const auto bytes = std::span(m_after).subspan(position, length);
            Bytes read(bytes.size());
            changed = changed && file.Seek(static_cast<std::int64_t>(position)) && file.Write(bytes);
            changed = changed && file.ReadAt(static_cast<std::int64_t>(position), read) == read.size() &&
                      std::equal(read.begin(), read.end(), bytes.begin());
        }
        return changed;
    }

    /// Whether the fault may leave half of a sector.
    bool TearsASector(const SFault& fault) const {
        return fault.call == SCall{ECall::Write, "game.iso", true} && m_before.size() % kDiskSector != 0;
    }

    /// Opens the file to change it. Returns false if that fails, or is refused with a text.
    bool Opens(std::string& refusal) const {
        refusal.clear();
        try {
            CUpdateFile file;
            return file.Open(m_path, EUpdateManner::UndoUnlessCommitted);
        } catch (const CRefused& refused) {
            refusal = refused.what();
            return false;
        }
    }

    /// Expects that the next run finds the file as it was.
    void ExpectRestored() const {
        std::string refusal;
        EXPECT_TRUE(Opens(refusal)) << refusal << LastFileError();
        EXPECT_TRUE(ReadWhole(m_path) == m_before);
        EXPECT_EQ(m_folder.Names(), std::vector<std::string>{"game.iso"});
    }

    CTestFolder m_folder;
    std::string m_path = m_folder / "game.iso";
    Bytes m_before = RandomBytes(GetParam(), 1);
    Bytes m_after = [this] {
        Bytes after = m_before;
        after.resize(kNewLength);
        for (const auto& [position, length] : kPieces) {
            const Bytes piece = RandomBytes(length, position);
            std::copy(piece.begin(), piece.end(), after.begin() + static_cast<std::ptrdiff_t>(position));
        }
        return after;
    }();
};

INSTANTIATE_TEST_SUITE_P(Lengths, UpdateFaults, testing::Values(4096, 4000));

TEST_P(UpdateFaults, CommittedChangeIsNewAndAnyOtherIsOld) {
    bool committed = false;
    std::string problem;
    const auto run = [&] {
        CUpdateFile file;
        const bool opened = file.Open(m_path, EUpdateManner::UndoUnlessCommitted);
        committed = opened && Change(file) && file.Commit();
        problem = opened ? file.Problem() + file.ReadProblem() : "not opened";
    };
    const std::size_t faults = SweepFaults(m_folder, {}, run, [&](const SFault&) {
        EXPECT_EQ(problem.empty(), committed) << problem;
        if (committed) {
            EXPECT_TRUE(ReadWhole(m_path) == m_after);
            EXPECT_EQ(m_folder.Names(), std::vector<std::string>{"game.iso"});
        } else {
            ExpectRestored();
        }
    });
    EXPECT_GT(faults, 30U);
}

TEST_P(UpdateFaults, ACallThatFailsWhileAChangeIsUndoneLeavesItsJournal) {
    const auto run = [&] {
        CUpdateFile file;
        if (file.Open(m_path, EUpdateManner::UndoUnlessCommitted)) {
            Change(file);
        }
    };
    const std::size_t faults = SweepFaults(m_folder, {}, run, [&](const SFault& fault) {
        if (TearsASector(fault)) {
            return;
        }
        EXPECT_TRUE(ReadWhole(m_path) == m_before || FileKindOf(m_folder / kJournal) == EFileKind::File);
        ExpectRestored();
    });
    EXPECT_GT(faults, 30U);
}

TEST_P(UpdateFaults, ACallThatFailsWhileAnInterruptedChangeIsUndoneLeavesItsJournal) {
    FolderState killed;
    {
        CUpdateFile file;
        ASSERT_TRUE(file.Open(m_path, EUpdateManner::UndoUnlessCommitted));
        ASSERT_TRUE(Change(file));
        killed = StateOf(m_folder);
    }
    for (const auto& [name, content] : killed) {
        WriteText(m_folder / name, content);
    }
    ASSERT_EQ(m_folder.Names(), (std::vector<std::string>{kJournal, "game.iso"}));
    bool opened = false;
    std::string refusal;
    const auto run = [&] { opened = Opens(refusal); };
    const std::size_t faults = SweepFaults(m_folder, {}, run, [&](const SFault& fault) {
        if (TearsASector(fault)) {
            return;
        }
        EXPECT_EQ(refusal, "") << "the journal belongs to the file";
        EXPECT_TRUE(!opened || ReadWhole(m_path) == m_before);
        ExpectRestored();
    });
    EXPECT_GT(faults, 30U);
}

/// Collected changes are written when there are many of them.
TEST_P(UpdateFaults, AWriteThatFillsTheDiskEndsALargeChange) {
    const Bytes large = RandomBytes(9 << 20U, 1);
    {
        const CWatchedCalls watch(m_folder.Path(), {{ECall::Write, "game.iso", true}, 1});
        CUpdateFile file;
        ASSERT_TRUE(file.Open(m_path, EUpdateManner::UndoUnlessCommitted));
        EXPECT_FALSE(file.Write(large));
        const std::string problem = "Cannot write " + m_path + ": " + SystemText(EFailure::NoSpace);
        EXPECT_EQ(file.Problem(), problem);
        EXPECT_FALSE(file.Seek(-1));
        EXPECT_EQ(file.Problem(), problem) << "the first failure counts";
        EXPECT_FALSE(file.Commit());
        EXPECT_TRUE(watch.HasFailed());
    }
    ExpectRestored();
}

TEST_P(UpdateFaults, AnInterruptedChangeThatCannotBeRuledOutIsNotRead) {
    WriteText(m_folder / kJournal, "");
    const CWatchedCalls watch(m_folder.Path(), {{ECall::Look, ".game.iso.vantrel-*", false}, 1});
    CUpdateFile file;
    EXPECT_THROW(file.Open(m_path, EUpdateManner::ReadOnly), CRefused);
    EXPECT_TRUE(watch.HasFailed());
}

}  // namespace
}  // namespace vantrel::test
