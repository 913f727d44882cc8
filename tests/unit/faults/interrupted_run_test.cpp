// Runs that end at any system call, as by a kill: the same command run again ends as an uninterrupted run. And the
// order of flushes, on which the state after a power cut depends.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <ostream>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "console/command_line.h"
#include "tests/unit/faults/captured_output.h"
#include "tests/unit/faults/fault_sweep.h"
#include "tests/unit/faults/game_files.h"

namespace vantrel::test {
namespace {

constexpr const char* kJournal = ".game.iso.vantrel-undo";

struct SCase {
    const char* name;
    void (*write)(const CTestFolder&);
    std::vector<std::string> words;
    FolderState older;
};

std::ostream& operator<<(std::ostream& stream, const SCase& tested) {
    return stream << tested.name;
}

class InterruptedRun : public testing::TestWithParam<SCase> {
protected:
    static int Run(const CTestFolder& folder, std::string& printed) {
        std::vector<std::string> words;
        for (const std::string& word : GetParam().words) {
            const std::size_t mark = std::min(word.find('@'), word.size());
            words.push_back(word.substr(0, mark) + (mark < word.size() ? folder / word.substr(mark + 1) : ""));
        }
        const CCapturedOutput output;
        const int status = RunCommandLine(words);
        printed = output.Text();
        return status;
    }

    static void Prepare(const CTestFolder& folder) {
        GetParam().write(folder);
        for (const auto& [name, content] : GetParam().older) {
            WriteText(folder / name, content);
        }
    }

    static void Fill(const CTestFolder& folder, const FolderState& state) {
        for (const auto& [path, content] : state) {
            if (path.ends_with('/')) {
                std::filesystem::create_directories(folder / path);
            }
        }
        for (const auto& [path, content] : state) {
            if (!path.ends_with('/')) {
                WriteText(folder / path, content);
            }
        }
    }

    /// Expects that the command, run again in this state, ends as an uninterrupted run.
    void ExpectCompletion(const FolderState& state) const {
        const CTestFolder folder;
        Fill(folder, state);
        std::string printed;
        const int status = Run(folder, printed);
        EXPECT_TRUE(status == 0 || printed.find("already") != std::string::npos) << printed;
        EXPECT_TRUE(StateOf(folder) == m_after) << printed;
    }

    /// Runs the command and takes the state of its folder before every call that changes it.
    void TakeStates(SSystem system = {}) {
        Prepare(m_folder);
        m_before = StateOf(m_folder);
        std::mutex mutex;
        system.beforeCall = [this, &mutex](const SCall& call) {
            static const std::set<ECall> kSame = {ECall::Read, ECall::ReadEnd, ECall::Seek, ECall::Size,
                                                  ECall::Look, ECall::List,    ECall::Lock};
            const std::lock_guard lock(mutex);
            if (!kSame.contains(call.kind) && call.written + (call.kind != ECall::Write) > 0) {
                m_states.insert(StateOf(m_folder));
            }
        };
        {
            const CWatchedCalls watch(m_folder.Path(), {}, system);
            std::string printed;
            ASSERT_EQ(Run(m_folder, printed), 0) << printed;
            m_calls = watch.Calls();
        }
        m_after = StateOf(m_folder);
        ASSERT_FALSE(m_before == m_after);
    }

    CTestFolder m_folder;
    FolderState m_before;
    FolderState m_after;
    std::set<FolderState> m_states;
    std::vector<SCall> m_calls;
};

TEST_P(InterruptedRun, IsCompletedByTheNextOne) {
    TakeStates();
    EXPECT_GT(m_states.size(), 1U);
    for (const FolderState& state : m_states) {
        ExpectCompletion(state);
    }
}

TEST_P(InterruptedRun, IsCompletedByTheNextOneOnLimitedSystems) {
    TakeStates(LimitedSystem());
    EXPECT_GT(m_states.size(), 1U);
    for (const FolderState& state : m_states) {
        ExpectCompletion(state);
    }
}

/// After a power cut, each sector of the image is old or new, and the length lags behind.
TEST_P(InterruptedRun, IsCompletedAfterAPowerCutInPlace) {
    constexpr std::size_t kSector = 512;
    constexpr int kStates = 40;
    TakeStates();
    const std::string& before = m_before.at("game.iso");
    const std::string& after = m_after.at("game.iso");
    const auto journaled = std::find_if(m_states.begin(), m_states.end(), [&](const FolderState& state) {
        return state.contains(kJournal) && state.at("game.iso") == after;
    });
    if (before == after) {
        return;  // changes nothing in place
    }
    ASSERT_NE(journaled, m_states.end()) << "the journal goes before the change is complete";
    std::mt19937 random(1);
    for (int i = 0; i < kStates; ++i) {
        FolderState state = *journaled;
        std::string& image = state["game.iso"];
        image = before;
        image.resize(before.size() + random() % (after.size() - before.size() + 1));
        for (std::size_t start = 0; start < image.size(); start += kSector) {
            if (random() % 2 == 0) {
                const std::size_t count = std::min(kSector, image.size() - start);
                image.replace(start, count, after, start, count);
            }
        }
        ExpectCompletion(state);
    }
}

TEST_P(InterruptedRun, FlushesInTheOrderThatKeepsOldOrNew) {
    TakeStates();
    const auto place = [this](ECall kind, const std::string& file) {
        return std::find_if(m_calls.begin(), m_calls.end(),
                            [&](const SCall& call) { return call.kind == kind && call.file == file; });
    };
    const auto end = m_calls.end();
    if (m_before.at("game.iso") != m_after.at("game.iso")) {
        const std::string journal = ".game.iso.vantrel-*";
        const auto change = place(ECall::Write, "game.iso");
        ASSERT_NE(change, end);
        EXPECT_LT(place(ECall::Flush, journal), place(ECall::Flush, ""));
        EXPECT_LT(place(ECall::Flush, ""), change);
        EXPECT_LT(change, place(ECall::Flush, "game.iso"));
        EXPECT_LT(place(ECall::Flush, "game.iso"), place(ECall::Remove, journal));
        EXPECT_NE(place(ECall::Remove, journal), end);
    } else {
        const auto& words = GetParam().words;
        const bool replaces = std::find(words.begin(), words.end(), "-f") != words.end();
        const auto flush =
            std::find_if(m_calls.begin(), m_calls.end(), [](const SCall& call) { return call.kind == ECall::Flush; });
        const auto rename =
            std::find_if(m_calls.begin(), m_calls.end(), [](const SCall& call) { return call.kind == ECall::Rename; });
        EXPECT_EQ(flush != end, replaces) << "only what replaces something is flushed";
        EXPECT_TRUE(!replaces || flush < rename);
    }
}

std::vector<SCase> Cases() {
    const FolderState source = {{"new", std::string(100'000, 'n')}};
    return {
        {"Iso2Cso", WriteUmd, {"iso2cso", "@game.iso"}, {}},
#ifndef _WIN32
        {"Iso2CsoReplacing", WriteUmd, {"iso2cso", "-f", "@game.iso"}, {{"game.cso", "older"}}},
#endif
        {"Iso2Bin", WriteCd, {"iso2bin", "@game.iso"}, {}},
        {"Iso2BinReplacing", WriteCd, {"iso2bin", "-f", "@game.iso"}, {{"game.bin", "older"}, {"game.cue", "older"}}},
        {"Iso2ImlExtracting", WriteCd, {"iso2iml", "@game.iso", "--extract"}, {}},
        {"Extract", WriteCd, {"extract", "@game.iso", "-C", "@files"}, {}},
        {"ExtractReplacing", WriteCd, {"extract", "-f", "@game.iso", "-C", "@"}, {{"SYSTEM.CNF", "older"}}},
        {"CheckPostgap", WriteCdWithoutPostgap, {"check-postgap", "@game.iso"}, {}},
        {"ConvertToZso", WriteUmd, {"convert", "--to", "zso", "@game.iso"}, {}},
        {"ConvertToBin", WriteCd, {"convert", "--to", "bin", "@game.iso"}, {}},
        {"ReplaceInCopy", WriteUmd, {"replace", "@game.iso", "UMD_DATA.BIN=@new", "-o", "@new.iso"}, source},
        {"ReplaceInPlace", WriteUmd, {"replace", "--in-place", "@game.iso", "UMD_DATA.BIN=@new"}, source},
    };
}

std::string NameOf(const testing::TestParamInfo<SCase>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Commands, InterruptedRun, testing::ValuesIn(Cases()), NameOf);

}  // namespace
}  // namespace vantrel::test
