// The console program while system calls fail: it prints a message, returns status 1 and leaves the folder unchanged.
// If a failing call loses nothing, the result is the same as without the fault.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "console/command_line.h"
#include "files/native_file.h"
#include "tests/unit/faults/captured_output.h"
#include "tests/unit/faults/fault_sweep.h"
#include "tests/unit/faults/game_files.h"

namespace vantrel::test {
namespace {

using Words = std::vector<std::string>;

/// Runs the program. What follows "@" in a word is a file in `folder`.
int RunIn(const CTestFolder& folder, const Words& words, std::string& printed) {
    Words whole;
    for (const std::string& word : words) {
        const std::size_t mark = word.find('@');
        whole.push_back(mark == std::string::npos ? word : word.substr(0, mark) + folder / word.substr(mark + 1));
    }
    const CCapturedOutput output;
    const int status = RunCommandLine(whole);
    printed = output.Text();
    return status;
}

void RunOrFail(const CTestFolder& folder, const Words& words) {
    std::string printed;
    ASSERT_EQ(RunIn(folder, words, printed), 0) << printed;
}

/// Replaces the image by the output of a command.
void Become(const CTestFolder& folder, const Words& words) {
    RunOrFail(folder, words);
    RemoveFile(folder / "game.iso");
}

struct SCase {
    const char* name;
    std::function<void(const CTestFolder&)> prepare;
    Words words;
};

std::ostream& operator<<(std::ostream& stream, const SCase& tested) {
    return stream << tested.name;
}

class ConsoleFaults : public testing::TestWithParam<SCase> {
protected:
    void Sweep(const SSystem& system) {
        m_before = StateOf(m_folder);
        const std::size_t faults = SweepFaults(
            m_folder, system, [this] { m_status = RunIn(m_folder, GetParam().words, m_printed); },
            [this](const SFault& fault) {
                if (fault.number == 0) {
                    TakeWholeRun();
                } else {
                    CheckFaultyRun(fault);
                }
            });
        RecordProperty("faults", static_cast<int>(faults));
        EXPECT_GT(faults, 0U);
    }

    CTestFolder m_folder;

private:
    void TakeWholeRun() {
        EXPECT_EQ(m_status, 0) << m_printed;
        m_after = StateOf(m_folder);
        m_printedWhole = m_printed;
    }

    void CheckFaultyRun(const SFault& fault) {
        if (m_status == 0) {
            EXPECT_TRUE(MayPass(fault.call) || IsExamination(fault)) << "the failure was not noticed";
            EXPECT_TRUE(StateOf(m_folder) == m_after) << "differs from a run without a fault: " << Names();
            // A file that cannot be examined may be reported as missing or of unknown length.
            EXPECT_TRUE(m_printed == m_printedWhole || fault.call.kind == ECall::Look) << m_printed;
        } else {
            EXPECT_EQ(m_status, 1);
            EXPECT_NE(m_printed, "");
            if (Verifies()) {
                EXPECT_EQ(m_printed.find(".vantrel-"), std::string::npos) << m_printed;
            }
            EXPECT_TRUE(StateOf(m_folder) == m_before) << m_printed << "the folder has changed: " << Names();
        }
    }

    std::string Names() const {
        std::string names;
        for (const auto& [path, content] : StateOf(m_folder)) {
            names += path + " (" + std::to_string(content.size()) + ") ";
        }
        return names;
    }

    static bool HasOption(const char* option) {
        const Words& words = GetParam().words;
        return std::find(words.begin(), words.end(), option) != words.end();
    }

    /// Whether new outputs must be on the disk at the end.
    static bool IsSynced() { return HasOption("--sync"); }
    /// Whether the command reads its output back, which must be named, not its temporary file.
    static bool Verifies() { return HasOption("--verify"); }
    static bool IsFolder(const SCall& call) { return call.file.empty() || call.file.ends_with('/'); }

    /// Calls whose failure may be harmless: closing an unchanged file or a folder, reading at its end, examining a
    /// path, copying within the system, protecting a temporary file from other processes or from the end of this one,
    /// and removing temporary files: a removal is retried, and the next run removes what was not found in a folder.
    bool MayPass(const SCall& call) const {
        switch (call.kind) {
            case ECall::Close:
                return !call.written || m_after == m_before || IsFolder(call) || call.file.ends_with("/lock") ||
                       call.file.ends_with(".vantrel-*");
            case ECall::Flush:  // a folder's, after a file was replaced or the journal of a complete change was removed
                return !IsSynced() && IsFolder(call);
            case ECall::Open:
                // A folder is also opened to find the name of a missing file in any case.
                return IsFolder(call);
            case ECall::List:
            case ECall::Copy:
            case ECall::ReadEnd:
            case ECall::Look:
            case ECall::Link:
            case ECall::Lock:
            case ECall::Mark:
            case ECall::Remove:
                return true;
            default:
                return false;
        }
    }

    /// Whether the call looks for the first time what an input is. If that fails, the file is opened again to be read,
    /// and no existing file is replaced.
    static bool IsExamination(const SFault& fault) {
        const bool opens = fault.call.kind == ECall::Open || fault.call.kind == ECall::Size;
        return opens && fault.number == 1 && !fault.call.written;
    }

    FolderState m_before;
    FolderState m_after;
    int m_status = 0;
    std::string m_printed;
    std::string m_printedWhole;
};

TEST_P(ConsoleFaults, LeaveNothingBehind) {
    GetParam().prepare(m_folder);
    Sweep({});
}

void WriteOlder(const CTestFolder& folder, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        WriteText(folder / name, "older");
    }
}

std::vector<SCase> Compressing() {
    const auto umdAndOlder = [](const CTestFolder& folder) {
        WriteUmd(folder);
        WriteOlder(folder, {"game.cso", "game.dax"});
    };
    const auto cso = [](const CTestFolder& folder) {
        WriteUmd(folder);
        Become(folder, {"iso2cso", "@game.iso"});
    };
    const auto dax = [](const CTestFolder& folder) {
        WriteUmd(folder);
        Become(folder, {"iso2dax", "@game.iso"});
    };
    return {
        {"Iso2Cso", WriteUmd, {"iso2cso", "@game.iso"}},
        {"Iso2CsoReplacing", umdAndOlder, {"iso2cso", "-f", "@game.iso"}},
        {"Iso2CsoSynced", WriteUmd, {"iso2cso", "--sync", "@game.iso", "--output-dir", "@new"}},
        {"Iso2Dax", WriteUmd, {"iso2dax", "@game.iso"}},
        {"Iso2DaxReplacing", umdAndOlder, {"iso2dax", "-f", "@game.iso"}},
        {"ConvertIsoToBin", WriteCd, {"convert", "--to", "bin", "@game.iso"}},
        {"ConvertCsoToIso", cso, {"convert", "--to", "iso", "@game.cso"}},
        {"ConvertCsoToDax", cso, {"convert", "--to", "dax", "@game.cso"}},
        {"ConvertDaxToBin", dax, {"convert", "--to", "bin", "@game.dax"}},
        {"Cso2Iso", cso, {"cso2iso", "@game.cso"}},
        {"Dax2Iso", dax, {"dax2iso", "@game.dax"}},
    };
}

std::vector<SCase> ReadingBack() {
    return {
        {"ConvertIsoToZso", WriteUmd, {"convert", "--verify", "--to", "zso", "@game.iso"}},
        {"ConvertIsoToDax", WriteUmd, {"convert", "--verify", "--to", "dax", "@game.iso"}},
    };
}

std::vector<SCase> Raw() {
    const auto cdAndOlder = [](const CTestFolder& folder) {
        WriteCd(folder);
        WriteOlder(folder, {"game.bin", "game.cue"});
    };
    const auto bin = [](const CTestFolder& folder) {
        WriteCd(folder);
        Become(folder, {"iso2bin", "@game.iso"});
    };
    return {
        {"Iso2Bin", WriteCd, {"iso2bin", "@game.iso"}},
        {"Iso2BinReplacing", cdAndOlder, {"iso2bin", "-f", "@game.iso"}},
        {"Iso2BinSynced", WriteCd, {"iso2bin", "--sync", "@game.iso"}},
        {"Iso2BinWithPostgap", WriteCdWithoutPostgap, {"iso2bin", "@game.iso"}},
        {"Bin2Iso", bin, {"bin2iso", "@game.bin"}},
        {"Cue2Iso", bin, {"bin2iso", "@game.cue"}},
    };
}

std::vector<SCase> Exporting() {
    const auto cdAndOlder = [](const CTestFolder& folder) {
        WriteCd(folder);
        WriteOlder(folder, {"game.iml", "game.ims"});
    };
    const auto cdAndOlderFiles = [cdAndOlder](const CTestFolder& folder) {
        cdAndOlder(folder);
        WriteOlder(folder, {"game.gaps", "SYSTEM.CNF"});
    };
    return {
        {"Iso2ImlCd", WriteCd, {"iso2iml", "@game.iso"}},
        {"Iso2ImlUmd", WriteUmd, {"iso2iml", "@game.iso"}},
        {"Iso2ImlDvd", WriteDvd, {"iso2iml", "@game.iso"}},
        {"Iso2ImlReplacing", cdAndOlder, {"iso2iml", "-f", "@game.iso"}},
        {"Iso2ImlExtracting", WriteCd, {"iso2iml", "@game.iso", "--extract", "@files"}},
        {"Iso2ImlExtractingReplacing", cdAndOlderFiles, {"iso2iml", "-f", "@game.iso", "--extract"}},
    };
}

std::vector<SCase> Rebuilding() {
    const auto layout = [](const std::function<void(const CTestFolder&)>& write) {
        return [write](const CTestFolder& folder) {
            write(folder);
            Become(folder, {"iso2iml", "@game.iso", "--extract"});
        };
    };
    const auto cdAndOlder = [layout](const CTestFolder& folder) {
        layout(WriteCdWithoutPostgap)(folder);
        WriteOlder(folder, {"game.iso"});
    };
    const auto otherCase = [layout](const CTestFolder& folder) {
        layout(WriteUmd)(folder);
        RenameFile(folder / "UMD_DATA.BIN", folder / "umd_data.bin", false);
    };
    const auto changed = [layout](const CTestFolder& folder) {
        layout(WriteUmd)(folder);
        WriteWhole(folder / "UMD_DATA.BIN", RandomBytes(100'000, 3));
        WriteWhole((folder / "PSP_GAME") + "/DATA.BIN", RandomBytes(10'000, 4));
    };
    const auto changedWithoutGaps = [changed](const CTestFolder& folder) {
        changed(folder);
        RemoveFile(folder / "game.gaps");
    };
    return {
        {"Iml2IsoCd", layout(WriteCd), {"iml2iso", "@game.iml"}},
        {"Iml2IsoUmd", otherCase, {"iml2iso", "@game.iml"}},
        {"Iml2IsoDvd", layout(WriteDvd), {"iml2iso", "@game.iml"}},
        {"Iml2IsoChanged", changed, {"iml2iso", "@game.iml"}},
        {"Iml2IsoChangedWithoutGaps", changedWithoutGaps, {"iml2iso", "@game.iml"}},
        {"Iml2IsoReplacing", cdAndOlder, {"iml2iso", "-f", "@game.iml"}},
        {"Iml2IsoDryRun", changed, {"iml2iso", "--dry-run", "--json", "@game.iml"}},
        {"Iml2IsoLikeWindowCd", layout(WriteCd), {"iml2iso", "--like-window", "@game.iml"}},
        {"Iml2IsoLikeWindowUmd", otherCase, {"iml2iso", "--like-window", "@game.iml"}},
        {"Iml2IsoLikeWindowDvd", layout(WriteDvd), {"iml2iso", "--like-window", "@game.iml"}},
        {"Iml2IsoLikeWindowReplacing", cdAndOlder, {"iml2iso", "--like-window", "-f", "@game.iml"}},
        {"Iml2IsoExact", layout(WriteCd), {"iml2iso", "--exact", "@game.iml"}},
        {"Iml2IsoExactDvd", layout(WriteDvd), {"iml2iso", "--exact", "@game.iml"}},
    };
}

std::vector<SCase> Replacing() {
    const auto withFile = [](const std::function<void(const CTestFolder&)>& write) {
        return [write](const CTestFolder& folder) {
            write(folder);
            WriteWhole(folder / "new", RandomBytes(100'000, 3));
        };
    };
    const auto cso = [withFile](const CTestFolder& folder) {
        withFile(WriteUmd)(folder);
        Become(folder, {"iso2cso", "@game.iso"});
    };
    const auto older = [withFile](const CTestFolder& folder) {
        withFile(WriteCd)(folder);
        WriteOlder(folder, {"new.iso"});
    };
    return {
        {"ReplaceInCopy", withFile(WriteUmd), {"replace", "@game.iso", "UMD_DATA.BIN=@new", "-o", "@new.iso"}},
        {"ReplaceInCso", cso, {"replace", "@game.cso", "PSP_GAME/DATA.BIN=@new", "-o", "@new.iso"}},
        {"ReplaceReplacing", older, {"replace", "-f", "@game.iso", "SYSTEM.CNF=@new", "-o", "@new.iso"}},
        {"ReplaceInPlace", withFile(WriteUmd), {"replace", "--in-place", "@game.iso", "UMD_DATA.BIN=@new"}},
        {"ReplaceInPlaceCd", withFile(WriteCd), {"replace", "--in-place", "@game.iso", "DATA/LEVEL1.BIN=@new"}},
        {"ReplaceDryRun", withFile(WriteUmd), {"replace", "--dry-run", "--json", "@game.iso", "UMD_DATA.BIN=@new"}},
    };
}

std::vector<SCase> Postgap() {
    return {
        {"CheckPostgap", WriteCdWithoutPostgap, {"check-postgap", "@game.iso"}},
        {"CheckPostgapComplete", WriteCd, {"check-postgap", "@game.iso"}},
        {"CheckPostgapDryRun", WriteCd, {"check-postgap", "--dry-run", "@game.iso"}},
        {"AddPostgapUmd", WriteUmd, {"add-postgap", "--count", "3", "@game.iso"}},
        {"AddPostgapCd", WriteCdWithoutPostgap, {"add-postgap", "--count", "3", "@game.iso"}},
    };
}

/// Every inspecting command, and extracting, with every format.
std::vector<SCase> Inspecting() {
    const auto become = [](const std::function<void(const CTestFolder&)>& write, const char* command) {
        return [write, command](const CTestFolder& folder) {
            write(folder);
            Become(folder, {command, "@game.iso"});
        };
    };
    const auto layout = [](const CTestFolder& folder) {
        WriteCd(folder);
        Become(folder, {"iso2iml", "@game.iso", "--extract"});
    };
    const auto two = [](const CTestFolder& folder) {
        WriteUmd(folder);
        RunOrFail(folder, {"iso2cso", "@game.iso"});
    };
    return {
        {"InfoIso", WriteCd, {"info", "@game.iso"}},
        {"InfoCso", become(WriteUmd, "iso2cso"), {"info", "@game.cso"}},
        {"InfoDax", become(WriteUmd, "iso2dax"), {"info", "--json", "@game.dax"}},
        {"InfoBin", become(WriteCd, "iso2bin"), {"info", "@game.bin"}},
        {"InfoCue", become(WriteCd, "iso2bin"), {"info", "@game.cue"}},
        {"InfoLayout", layout, {"info", "@game.iml"}},
        {"VerifyIso", WriteCd, {"verify", "@game.iso"}},
        {"VerifyCso", become(WriteUmd, "iso2cso"), {"verify", "@game.cso"}},
        {"VerifyDax", become(WriteUmd, "iso2dax"), {"verify", "@game.dax"}},
        {"VerifyBin", become(WriteCd, "iso2bin"), {"verify", "@game.bin"}},
        {"VerifyCue", become(WriteCd, "iso2bin"), {"verify", "@game.cue"}},
        {"VerifyLayout", layout, {"verify", "@game.iml"}},
        {"VerifyAgainst", two, {"verify", "@game.iso", "--against", "@game.cso"}},
        {"ListIso", WriteCd, {"list", "@game.iso"}},
        {"ListCso", become(WriteUmd, "iso2cso"), {"list", "@game.cso"}},
        {"ListDax", become(WriteUmd, "iso2dax"), {"list", "@game.dax"}},
        {"ListBin", become(WriteCd, "iso2bin"), {"list", "@game.bin"}},
        {"ListCue", become(WriteCd, "iso2bin"), {"list", "@game.cue"}},
        {"ExtractCso", become(WriteUmd, "iso2cso"), {"extract", "@game.cso", "-C", "@files"}},
        {"ExtractBin", become(WriteCd, "iso2bin"), {"extract", "@game.bin", "-C", "@files"}},
    };
}

std::vector<SCase> Extracting() {
    const auto older = [](const CTestFolder& folder) {
        WriteCd(folder);
        WriteOlder(folder, {"SYSTEM.CNF"});
    };
    return {
        {"ExtractIso", WriteCd, {"extract", "@game.iso", "-C", "@files"}},
        {"ExtractReplacing", older, {"extract", "-f", "@game.iso", "-C", "@"}},
        {"ExtractSynced", WriteCd, {"extract", "--sync", "@game.iso", "-C", "@files"}},
    };
}

std::string NameOf(const testing::TestParamInfo<SCase>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Compressing, ConsoleFaults, testing::ValuesIn(Compressing()), NameOf);
INSTANTIATE_TEST_SUITE_P(ReadingBack, ConsoleFaults, testing::ValuesIn(ReadingBack()), NameOf);
INSTANTIATE_TEST_SUITE_P(Raw, ConsoleFaults, testing::ValuesIn(Raw()), NameOf);
INSTANTIATE_TEST_SUITE_P(Exporting, ConsoleFaults, testing::ValuesIn(Exporting()), NameOf);
INSTANTIATE_TEST_SUITE_P(Rebuilding, ConsoleFaults, testing::ValuesIn(Rebuilding()), NameOf);
INSTANTIATE_TEST_SUITE_P(Replacing, ConsoleFaults, testing::ValuesIn(Replacing()), NameOf);
INSTANTIATE_TEST_SUITE_P(Postgap, ConsoleFaults, testing::ValuesIn(Postgap()), NameOf);
INSTANTIATE_TEST_SUITE_P(Inspecting, ConsoleFaults, testing::ValuesIn(Inspecting()), NameOf);
INSTANTIATE_TEST_SUITE_P(Extracting, ConsoleFaults, testing::ValuesIn(Extracting()), NameOf);

/// Commits of one output, of two and of files in folders on systems with fewer features.
class ConsoleFaultsOnLimitedSystems : public ConsoleFaults {};

TEST_P(ConsoleFaultsOnLimitedSystems, LeaveNothingBehind) {
    GetParam().prepare(m_folder);
    SSystem system = LimitedSystem();
    system.linksFiles = true;
    Sweep(system);
}

TEST_P(ConsoleFaultsOnLimitedSystems, LeaveNothingBehindWithoutLinks) {
    GetParam().prepare(m_folder);
    Sweep(LimitedSystem());
}

INSTANTIATE_TEST_SUITE_P(ReadingBack, ConsoleFaultsOnLimitedSystems, testing::ValuesIn(ReadingBack()), NameOf);
INSTANTIATE_TEST_SUITE_P(Raw, ConsoleFaultsOnLimitedSystems, testing::ValuesIn(Raw()), NameOf);
INSTANTIATE_TEST_SUITE_P(Extracting, ConsoleFaultsOnLimitedSystems, testing::ValuesIn(Extracting()), NameOf);

TEST_P(ConsoleFaultsOnLimitedSystems, LeaveNothingBehindWithoutVanishingFiles) {
    GetParam().prepare(m_folder);
    SSystem system;
    system.vanishingFiles = false;
    Sweep(system);
}

/// Interrupted and partial transfers are not failures.
class InterruptedTransfers : public ConsoleFaults {};

TEST_P(InterruptedTransfers, ChangeNothing) {
    GetParam().prepare(m_folder);
    const FolderState before = StateOf(m_folder);
    std::string printed;
    ASSERT_EQ(RunIn(m_folder, GetParam().words, printed), 0) << printed;
    const FolderState after = StateOf(m_folder);
    CTestFolder second;
    GetParam().prepare(second);
    SSystem system;
    system.transfersWhole = false;
    {
        const CWatchedCalls watch(second.Path(), {}, system);
        ASSERT_EQ(RunIn(second, GetParam().words, printed), 0) << printed;
    }
    EXPECT_TRUE(StateOf(second) == after);
}

INSTANTIATE_TEST_SUITE_P(Compressing, InterruptedTransfers, testing::ValuesIn(Compressing()), NameOf);
INSTANTIATE_TEST_SUITE_P(Raw, InterruptedTransfers, testing::ValuesIn(Raw()), NameOf);
INSTANTIATE_TEST_SUITE_P(Exporting, InterruptedTransfers, testing::ValuesIn(Exporting()), NameOf);
INSTANTIATE_TEST_SUITE_P(Rebuilding, InterruptedTransfers, testing::ValuesIn(Rebuilding()), NameOf);
INSTANTIATE_TEST_SUITE_P(Postgap, InterruptedTransfers, testing::ValuesIn(Postgap()), NameOf);

}  // namespace
}  // namespace vantrel::test
