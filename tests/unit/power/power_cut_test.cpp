// The power fails during a command, at every operation of its disk: whatever a real disk may hold then, the outputs are
// the older or the new ones, and the next run ends as an uninterrupted one. The commands run on the disk in memory;
// fuzz/power_cut.h describes what it may hold.
#include "fuzz/power_cut.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "console/command_line.h"
#include "files/leftovers.h"
#include "files/path.h"
#include "files/refused.h"
#include "files/temporary_path.h"
#include "files/update_file.h"
#include "fuzz/memory_disk.h"
#include "tests/support/image_builder.h"
#include "tests/support/undated.h"
#include "tests/unit/faults/captured_output.h"

namespace vantrel::test {
namespace {

using fuzz::SDiskTree;
using Contents = std::map<std::string, Bytes>;
using Words = std::vector<std::string>;

constexpr std::int64_t kCapacity = 1 << 30U;
constexpr std::size_t kSmallFile = 9000;
constexpr std::size_t kLargeFile = 9 << 20U;  // more than a change in place collects in memory
#ifdef __SANITIZE_ADDRESS__
constexpr int kRandomStates = 2;
constexpr int kLargeStates = 1;
constexpr std::ptrdiff_t kSecondCuts = 4;
#else
constexpr int kRandomStates = 20;
constexpr int kLargeStates = 3;
constexpr std::ptrdiff_t kSecondCuts = 10;
#endif

enum class EPromise {
    One,       ///< The output is the older one or the new one.
    Together,  ///< Each output is; when the next run has begun, all of them are older, or all new.
    Each,      ///< Each output is.
    InPlace,   ///< When the next run has begun, the image is the older one or the new one.
    None,      ///< The outputs were not flushed.
};

struct SCase {
    const char* name;
    Bytes (*image)();
    std::vector<Words> before;  ///< Commands that write further inputs.
    std::vector<std::string> older;
    Words words;
    EPromise promise;
    bool isLarge = false;  ///< Too large for more than some states at random.
};

std::ostream& operator<<(std::ostream& stream, const SCase& tested) {
    return stream << tested.name;
}

/// "@a" stands for a file on the disk in memory.
Words WithPaths(Words words) {
    for (std::string& word : words) {
        const std::size_t mark = word.find('@');
        if (mark != std::string::npos) {
            word.replace(mark, 1, fuzz::kFolder);
        }
    }
    return words;
}

int RunWords(const Words& words, std::string& printed) {
    const CCapturedOutput output;
    const int status = RunCommandLine(WithPaths(words));
    printed = output.Text();
    return status;
}

/// Whether a path is that of a temporary file or of a journal, or leads into a temporary folder.
bool IsOurs(const std::string& path) {
    for (std::size_t start = 1; start < path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        const std::string_view name = std::string_view(path).substr(start, end - start);
        if (IsTemporaryName(name) || name.ends_with(".vantrel-undo")) {
            return true;
        }
        start = end + 1;
    }
    return false;
}

Contents WithoutOurs(Contents contents) {
    std::erase_if(contents, [](const auto& entry) { return IsOurs(entry.first); });
    return contents;
}

Contents Undated(Contents contents) {
    for (auto& [path, content] : contents) {
        if (path.ends_with(".iml") || path.ends_with(".gaps")) {
            const std::string text = test::Undated(path, std::string(content.begin(), content.end()));
            content.assign(text.begin(), text.end());
        }
    }
    return contents;
}

bool Holds(const Contents& contents, const Contents::value_type& entry) {
    const auto found = contents.find(entry.first);
    return found != contents.end() && found->second == entry.second;
}

std::size_t HashOf(const SDiskTree& tree) {
    std::size_t hash = 0;
    const auto add = [&hash](std::size_t value) { hash = (hash ^ value) * 0x9E3779B97F4A7C15U + (hash >> 29U); };
    for (const auto& [folder, names] : tree.folders) {
        for (const auto& [name, node] : names) {
            add(static_cast<std::size_t>(folder));
            add(std::hash<std::string>()(name));
            add(static_cast<std::size_t>(node));
        }
    }
    for (const auto& [node, content] : tree.files) {
        add(static_cast<std::size_t>(node));
        add(std::hash<std::string_view>()({reinterpret_cast<const char*>(content->data()), content->size()}));
    }
    return hash;
}

class PowerCut : public testing::TestWithParam<std::tuple<SCase, bool>> {
protected:
    static const SCase& Case() { return std::get<0>(GetParam()); }
    static bool HasUnnamedAndLinked() { return std::get<1>(GetParam()); }

    void SetUp() override {
        fuzz::SupportUnnamedAndLinkedFiles(HasUnnamedAndLinked());
        fuzz::ClearDisk(kCapacity);
        PutFile("@game.iso", Case().image());
        PutFile("@new", RandomBytes(Case().isLarge ? kLargeFile : kSmallFile, 7));
        std::string printed;
        for (const Words& words : Case().before) {
            ASSERT_EQ(RunWords(words, printed), 0) << printed;
        }
        for (const std::string& older : Case().older) {
            PutFile(older, TextLikeBytes(700, 3));
        }
        m_start = fuzz::CopyOfDisk();
        fuzz::StartRecording();
        const int status = RunWords(Case().words, printed);
        m_done = fuzz::StopRecording();
        ASSERT_EQ(status, 0) << printed;
        m_before = Undated(ContentsOf(m_start));
        m_after = Undated(fuzz::WholeDisk());
        ASSERT_FALSE(m_before == m_after);
        RunWords(Case().words, printed);
        m_afterTwo = Undated(fuzz::WholeDisk());
    }

    static void PutFile(const std::string& path, const Bytes& content) {
        fuzz::PutFile(WithPaths({path}).front(), content);
    }

    /// What the disk holds when the next run has dealt with what the power cut left.
    Contents Recovered(const SDiskTree& state) const {
        fuzz::LoadDisk(state);
        if (Case().promise == EPromise::InPlace) {
            CUpdateFile image;
            EXPECT_TRUE(image.Open(std::string(fuzz::kFolder) + "game.iso", EUpdateManner::UndoUnlessCommitted));
        } else {
            for (const auto& [path, content] : WithoutOurs(ContentsOf(state))) {
                if (path.ends_with('/')) {
                    RemoveLeftovers(path);
                }
            }
        }
        return Undated(fuzz::WholeDisk());
    }

    /// Expects each file to be as before the run or as after it.
    void ExpectOldOrNew(const Contents& contents, bool maysMiss) const {
        for (const auto& entry : contents) {
            EXPECT_TRUE(Holds(m_before, entry) || Holds(m_after, entry)) << entry.first;
        }
        for (const auto& [path, content] : m_before) {
            EXPECT_TRUE(contents.contains(path) || maysMiss || !m_after.contains(path)) << path << " is missing";
        }
    }

    void ExpectPromise(const Contents& found, const Contents& recovered) const {
        const auto isOldOrNew = [this](const Contents& contents) {
            return contents == m_before || contents == m_after;
        };
        // Without hard links, a file is missing while it is replaced.
        const bool isInReplacement = !HasUnnamedAndLinked() && recovered == m_after;
        switch (Case().promise) {
            case EPromise::One:
                EXPECT_TRUE(isOldOrNew(WithoutOurs(found)) && isOldOrNew(recovered));
                break;
            case EPromise::Together:
                ExpectOldOrNew(WithoutOurs(found), isInReplacement);
                EXPECT_TRUE(isOldOrNew(recovered));
                break;
            case EPromise::Each:
                ExpectOldOrNew(WithoutOurs(found), isInReplacement);
                ExpectOldOrNew(recovered, false);
                break;
            case EPromise::InPlace:
                EXPECT_TRUE(isOldOrNew(recovered));
                break;
            case EPromise::None:
                break;
        }
    }

    /// The words of the next run, which replaces what is not complete.
    static Words NextWords() {
        Words words = Case().words;
        if (Case().promise == EPromise::None) {
            words.insert(words.begin() + 1, "-f");
        }
        return words;
    }

    void ExpectCompletion(const SDiskTree& state, bool isChanged) const {
        fuzz::LoadDisk(state);
        std::string printed;
        const int status = RunWords(NextWords(), printed);
        EXPECT_TRUE(status == 0 || printed.find("already") != std::string::npos) << printed;
        Contents whole = Undated(fuzz::WholeDisk());
        if (Case().promise == EPromise::None) {
            whole = WithoutOurs(std::move(whole));  // may be in a folder that another run moved, after two power cuts
        }
        EXPECT_TRUE(whole == (isChanged ? m_afterTwo : m_after)) << printed << TextOf(whole);
    }

    /// Whether everything is on the disk that must be there at the end. A temporary folder may still be removed.
    bool IsComplete(const Contents& found) const {
        return Case().promise == EPromise::None ||
               (Case().promise == EPromise::InPlace ? found : WithoutOurs(found)) == m_after;
    }

    /// Expects what is promised of a state. Remembers it for a second power cut, unless it is in no way incomplete.
    void Check(const SDiskTree& state, bool isAtEnd) {
        if (HasFailure() || !m_checked.insert(HashOf(state) + isAtEnd).second) {
            return;
        }
        const Contents found = Undated(ContentsOf(state));
        Contents recovered;
        try {
            for (const auto& entry : m_before) {
                EXPECT_TRUE(Holds(found, entry) || !Holds(m_after, entry)) << entry.first << " was not to be changed";
            }
            recovered = Recovered(state);
            ExpectPromise(found, recovered);
            EXPECT_TRUE(!isAtEnd || IsComplete(found)) << "the command ended before its outputs were on the disk";
            ExpectCompletion(state, Case().promise == EPromise::InPlace && recovered == m_after);
        } catch (const std::exception& error) {
            ADD_FAILURE() << error.what();
        }
        if (HasFailure()) {
            ADD_FAILURE() << "the disk holds\n" << TextOf(found);
        }
        if (recovered != m_after) {
            m_states.push_back(state);
        }
    }

    /// Lets the power fail again, at random moments of the next run.
    void CutNextRun(const SDiskTree& state, std::ptrdiff_t cuts) {
        fuzz::LoadDisk(state);
        fuzz::StartRecording();
        std::string printed;
        RunWords(NextWords(), printed);
        const auto done = fuzz::StopRecording();
        for (std::ptrdiff_t i = 0; i < cuts && !HasFailure(); ++i) {
            const std::size_t count = m_random() % (done.size() + 1);
            SCOPED_TRACE("again after " + std::to_string(count) + " operations of the next run");
            Check(fuzz::CPowerCut(state, std::span(done).first(count)).RandomState(m_random), false);
        }
    }

    std::string TextOf(const Contents& contents) const {
        std::string text;
        for (const auto& entry : contents) {
            text += entry.first + (Holds(m_before, entry)  ? ": older\n"
                                   : Holds(m_after, entry) ? ": new\n"
                                                           : ": " + std::to_string(entry.second.size()) + " bytes\n");
        }
        return text;
    }

    SDiskTree m_start;
    std::vector<fuzz::SDiskOperation> m_done;
    Contents m_before;
    Contents m_after;
    Contents m_afterTwo;  ///< After two uninterrupted runs.
    std::unordered_set<std::size_t> m_checked;
    std::vector<SDiskTree> m_states;  ///< For a second power cut.
    std::mt19937 m_random = std::mt19937(1);
};

TEST_P(PowerCut, LeavesOldOrNewAndIsCompletedByTheNextRun) {
    for (std::size_t count = 0; count <= m_done.size() && !HasFailure(); ++count) {
        SCOPED_TRACE("after " + std::to_string(count) + " of " + std::to_string(m_done.size()) + " operations");
        const fuzz::CPowerCut cut(m_start, std::span(m_done).first(count));
        const bool isAtEnd = count == m_done.size();
        for (int i = 0; i < kLargeStates && Case().isLarge; ++i) {
            Check(cut.RandomState(m_random), isAtEnd);
        }
        if (!Case().isLarge) {
            cut.ForEachState(m_random, kRandomStates, [&](const SDiskTree& state) { Check(state, isAtEnd); });
        }
    }
    RecordProperty("states", static_cast<int>(m_checked.size()));
    std::shuffle(m_states.begin(), m_states.end(), m_random);
    const std::ptrdiff_t cuts = Case().isLarge ? 2 : kSecondCuts;
    const std::vector<SDiskTree> states(m_states.begin(), m_states.begin() + std::min(std::ssize(m_states), cuts));
    for (const SDiskTree& state : states) {
        CutNextRun(state, cuts);
    }
}

Bytes Umd() {
    SImageDescription description;
    description.kind = EImageKind::Umd;
    description.files = {{"UMD_DATA.BIN", TextLikeBytes(48, 1)}, {"PSP_GAME/DATA.BIN", RandomBytes(5000, 2)}};
    return BuildImage(description).bytes;
}

SImageDescription CdDescription() {
    SImageDescription description;
    description.kind = EImageKind::Cd;
    description.files = {{"SYSTEM.CNF", TextLikeBytes(61, 1)}, {"DATA/LEVEL1.BIN", RandomBytes(5000, 2), 3}};
    description.holeFill = 7;
    return description;
}

Bytes Cd() {
    return BuildImage(CdDescription()).bytes;
}

Bytes LargeUmd() {
    SImageDescription description;
    description.kind = EImageKind::Umd;
    description.files = {{"UMD_DATA.BIN", TextLikeBytes(48, 1)}, {"PSP_GAME/DATA.BIN", RandomBytes(1'200'000, 2)}};
    return BuildImage(description).bytes;
}

Bytes LargeCd() {
    SImageDescription description = CdDescription();
    description.files.push_back({"DATA/LEVEL2.BIN", RandomBytes(1'200'000, 2)});
    return BuildImage(description).bytes;
}

Bytes CdWithManyFiles() {
    SImageDescription description;
    description.files = ManyFiles(20, 5, 1);
    return BuildImage(description).bytes;
}

Bytes CdWithoutPostgap() {
    SImageDescription description = CdDescription();
    description.postgap = EPostgap::Missing;
    return BuildImage(description).bytes;
}

std::vector<SCase> Cases() {
    using enum EPromise;
    return {
        {"Iso2CsoReplacing", Umd, {}, {"@game.cso"}, {"iso2cso", "-f", "@game.iso"}, One},
        {"Iso2CsoSynced", Umd, {}, {}, {"iso2cso", "--sync", "@game.iso"}, One},
        {"Iso2Cso", Umd, {}, {}, {"iso2cso", "@game.iso"}, None},
        {"Cso2IsoReplacing",
         Umd,
         {{"iso2cso", "@game.iso"}},
         {"@new.iso"},
         {"cso2iso", "-f", "@game.cso", "-o", "@new.iso"},
         One},
        {"Iso2DaxReplacing", Umd, {}, {"@game.dax"}, {"iso2dax", "-f", "@game.iso"}, One},
        {"Dax2IsoReplacing",
         Umd,
         {{"iso2dax", "@game.iso"}},
         {"@new.iso"},
         {"dax2iso", "-f", "@game.dax", "-o", "@new.iso"},
         One},
        {"Bin2IsoReplacing",
         Cd,
         {{"iso2bin", "@game.iso"}},
         {"@new.iso"},
         {"bin2iso", "-f", "@game.cue", "-o", "@new.iso"},
         One},
        {"Iml2IsoReplacing",
         Cd,
         {{"iso2iml", "@game.iso", "--extract"}},
         {"@new.iso"},
         {"iml2iso", "-f", "@game.iml", "-o", "@new.iso"},
         One},
        {"ConvertToZsoReplacing", Umd, {}, {"@game.zso"}, {"convert", "-f", "--to", "zso", "@game.iso"}, One},
        {"ConvertVerified", Umd, {}, {"@game.zso"}, {"convert", "--verify", "-f", "--to", "zso", "@game.iso"}, One},
        {"ReplaceInCopyReplacing",
         Umd,
         {},
         {"@new.iso"},
         {"replace", "-f", "@game.iso", "UMD_DATA.BIN=@new", "-o", "@new.iso"},
         One},
        {"ReplaceInCopySynced",
         Umd,
         {},
         {},
         {"replace", "--sync", "@game.iso", "UMD_DATA.BIN=@new", "-o", "@new.iso"},
         One},
        {"Iso2BinReplacing", Cd, {}, {"@game.bin", "@game.cue"}, {"iso2bin", "-f", "@game.iso"}, Together},
        {"Iso2BinReplacingOne", Cd, {}, {"@game.cue"}, {"iso2bin", "-f", "@game.iso"}, Together},
        {"Iso2BinSynced", Cd, {}, {}, {"iso2bin", "--sync", "@game.iso"}, Together},
        {"Iso2Bin", Cd, {}, {}, {"iso2bin", "@game.iso"}, None},
        {"ConvertToBinReplacing",
         Cd,
         {},
         {"@game.bin", "@game.cue"},
         {"convert", "-f", "--to", "bin", "@game.iso"},
         Together},
        {"Iso2ImlReplacing", Cd, {}, {"@game.iml", "@game.ims"}, {"iso2iml", "-f", "@game.iso"}, Together},
        {"Iso2ImlExtractingReplacing",
         Cd,
         {},
         {"@game.iml", "@game.ims", "@game.gaps", "@SYSTEM.CNF", "@DATA/LEVEL1.BIN"},
         {"iso2iml", "-f", "@game.iso", "--extract"},
         Together},
        {"Iso2ImlExtractingSynced", Cd, {}, {}, {"iso2iml", "--sync", "@game.iso", "--extract=@files"}, Together},
        {"ExtractReplacing",
         Cd,
         {},
         {"@SYSTEM.CNF", "@DATA/LEVEL1.BIN"},
         {"extract", "-f", "@game.iso", "-C", "@"},
         Together},
        {"ExtractReplacingOne", Cd, {}, {"@DATA/LEVEL1.BIN"}, {"extract", "-f", "@game.iso", "-C", "@"}, Together},
        {"ExtractSynced", Cd, {}, {}, {"extract", "--sync", "@game.iso", "-C", "@files"}, Together},
        {"ExtractSyncedIntoFolder", Cd, {}, {"@DATA/other"}, {"extract", "--sync", "@game.iso", "-C", "@"}, Together},
        {"Extract", Cd, {}, {}, {"extract", "@game.iso", "-C", "@files"}, None},
        {"SeveralInputsSynced",
         Umd,
         {{"convert", "--to", "iso", "@game.iso", "-o", "@second.iso"}},
         {},
         {"iso2cso", "--sync", "--keep-going", "@game.iso", "@second.iso", "--output-dir", "@new_folder"},
         Each},
        {"SeveralInputsReplacing",
         Umd,
         {{"convert", "--to", "iso", "@game.iso", "-o", "@second.iso"}},
         {"@game.cso", "@second.cso"},
         {"iso2cso", "-f", "@game.iso", "@second.iso"},
         Each},
        {"CheckPostgap", CdWithoutPostgap, {}, {}, {"check-postgap", "@game.iso"}, InPlace},
        {"AddPostgap", Umd, {}, {}, {"add-postgap", "--count", "2", "@game.iso"}, InPlace},
        {"ReplaceInPlace", Umd, {}, {}, {"replace", "--in-place", "@game.iso", "UMD_DATA.BIN=@new"}, InPlace},
        {"LargeIso2CsoReplacing", LargeUmd, {}, {"@game.cso"}, {"iso2cso", "-f", "@game.iso"}, One, true},
        {"LargeIso2BinReplacing", LargeCd, {}, {"@game.bin"}, {"iso2bin", "-f", "@game.iso"}, Together, true},
        {"LargeExtractReplacing",
         LargeCd,
         {},
         {"@DATA/LEVEL2.BIN"},
         {"extract", "-f", "@game.iso", "-C", "@"},
         Together,
         true},
        {"LargeReplaceInPlace",
         LargeUmd,
         {},
         {},
         {"replace", "--in-place", "@game.iso", "UMD_DATA.BIN=@new"},
         InPlace,
         true},
        {"ExtractManySynced",
         CdWithManyFiles,
         {},
         {},
         {"extract", "--sync", "@game.iso", "-C", "@files"},
         Together,
         true},
    };
}

std::string NameOf(const testing::TestParamInfo<std::tuple<SCase, bool>>& info) {
    return std::get<0>(info.param).name + std::string(std::get<1>(info.param) ? "" : "WithoutLinks");
}

INSTANTIATE_TEST_SUITE_P(Commands, PowerCut, testing::Combine(testing::ValuesIn(Cases()), testing::Bool()), NameOf);

}  // namespace
}  // namespace vantrel::test
