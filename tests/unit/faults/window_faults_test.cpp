// The conversions as the window runs them while system calls fail: the text that ends the conversion for each call, and
// the failures without effect. window_answers.txt has the expected texts.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <ostream>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "app/converter/converter_conversion.h"
#include "compress/cso.h"
#include "compress/dax.h"
#include "files/native_file.h"
#include "iml/export/export.h"
#include "iml/rebuild/rebuild.h"
#include "iso/postgap.h"
#include "raw/bin_to_iso.h"
#include "raw/iso_to_bin.h"
#include "tests/support/layout_builder.h"
#include "tests/support/recording_operation.h"
#include "tests/unit/faults/fault_sweep.h"
#include "tests/unit/faults/game_files.h"

namespace vantrel::test {
namespace {

/// In place of a text: the conversion completes.
constexpr const char* kGoesOn = "goes on";

/// The texts of the failing conversion for each call, in the order of the calls.
using Answers = std::map<std::string, std::vector<std::string>>;

struct SWindowCase {
    const char* name;
    std::function<void(const CTestFolder&)> prepare;
    std::function<void(const CTestFolder&, COperation&)> run;
};

std::ostream& operator<<(std::ostream& stream, const SWindowCase& tested) {
    return stream << tested.name;
}

void Replace(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t found = 0; (found = text.find(from, found)) != std::string::npos; found += to.size()) {
        text.replace(found, from.size(), to);
    }
}

/// Replaces the folder by "@", block numbers by "#", a final line break by "\n", and system texts by neutral ones.
std::string Simplified(std::string text, const CTestFolder& folder) {
    Replace(text, folder.Path(), "@");
    Replace(text, SystemText(EFailure::Device), "(device error)");
    Replace(text, SystemText(EFailure::NoSpace), "(no space)");
    static constexpr std::string_view kBlock = "block ";
    if (const std::size_t found = text.find(kBlock); found != std::string::npos) {
        const std::size_t number = found + kBlock.size();
        text.replace(number, std::min(text.find_first_not_of("0123456789", number), text.size()) - number, "#");
    }
    if (text.ends_with('\n')) {
        text.replace(text.size() - 1, 1, "\\n");
    }
    return text;
}

/// The text that ends the conversion.
std::string AnswerOf(const SWindowCase& tested, const CTestFolder& folder) {
    CRecordingOperation operation;
    try {
        tested.run(folder, operation);
    } catch (const CConversionFailed& failure) {
        return Simplified(failure.what(), folder);
    }
    const bool ended = !operation.CallsOf("completed").empty() || !operation.CallsOf("notify").empty();
    return ended ? kGoesOn : "ends without a message";
}

/// The answers in the format of window_answers.txt: each call followed by its indented texts; the calls without effect
/// at the end.
std::string TextOf(const Answers& answers) {
    std::string text;
    std::string withoutEffect;
    for (const auto& [call, texts] : answers) {
        if (texts == std::vector<std::string>{kGoesOn}) {
            withoutEffect += "    " + call + "\n";
            continue;
        }
        text += call + "\n";
        for (const std::string& said : texts) {
            text += "    " + said + "\n";
        }
    }
    return text + kGoesOn + "\n" + withoutEffect;
}

/// The part of window_answers.txt for a conversion on this system.
std::string ExpectedAnswers(const std::string& name) {
    std::string all = ReadText(VANTREL_SOURCE_DIR "/tests/unit/faults/window_answers.txt");
#ifdef _WIN32
    all = std::regex_replace(all, std::regex("\nposix:[^\n]*"), "");
#else
    Replace(all, "\nposix:", "\n");
#endif
    const std::string heading = "[" + name + "]\n";
    const std::size_t start = all.find(heading);
    if (start == std::string::npos) {
        return "";
    }
    const std::size_t end = all.find("\n[", start);
    return all.substr(start + heading.size(), end - start - heading.size());
}

class WindowFaults : public testing::TestWithParam<SWindowCase> {};

TEST_P(WindowFaults, EndWithTheExpectedTexts) {
    const CTestFolder folder;
    GetParam().prepare(folder);
    std::string answer;
    Answers answers;
    const std::size_t faults = SweepFaults(
        folder, {}, [&] { answer = AnswerOf(GetParam(), folder); },
        [&](const SFault& fault) {
            if (fault.number == 0) {
                EXPECT_EQ(answer, kGoesOn);
                return;
            }
            std::vector<std::string>& texts = answers[TextOf(fault.call)];
            if (texts.empty() || texts.back() != answer) {
                texts.push_back(answer);
            }
        });
    RecordProperty("faults", static_cast<int>(faults));
    EXPECT_EQ(TextOf(answers), ExpectedAnswers(GetParam().name));
}

/// A runner whose converter has always finished.
class CNoConverter : public CConverterRunner {
public:
    void PlaceConverter(const std::string& /*folder*/) override {}
    void StartBatchFile(const std::string& /*folder*/, const std::string& /*name*/) override {}
    void StartConverter(const std::string& /*folder*/, const std::vector<std::string>& /*arguments*/) override {}
    bool HasFinished() override { return true; }
    void RemoveConverter(const std::string& /*folder*/) override {}
};

/// Replaces "game.iso" by the output of a conversion.
template <typename Conversion>
void Become(const CTestFolder& folder, Conversion convert) {
    CRecordingOperation operation;
    convert(operation);
    RemoveFile(folder / "game.iso");
}

SCompressionRequest Compression(const CTestFolder& folder, const char* extension) {
    SCompressionRequest request = WindowCompression(folder.Path(), "game.iso", extension);
    request.level = 9;
    return request;
}

void WriteCso(const CTestFolder& folder) {
    WriteUmd(folder);
    Become(folder, [&](COperation& operation) { IsoToCso(Compression(folder, ".cso"), operation); });
}

void WriteDax(const CTestFolder& folder) {
    WriteUmd(folder);
    Become(folder, [&](COperation& operation) { IsoToDax(Compression(folder, ".dax"), operation); });
}

void WriteBin(const CTestFolder& folder) {
    WriteCd(folder);
    Become(folder, [&](COperation& operation) {
        IsoToBin({folder / "game.iso", folder / "game.bin", folder / "game.cue", EOutputManner::CommitNew}, operation);
    });
}

/// Writes a layout with leading structures and two files, whose paths are absolute.
void WriteLayout(const CTestFolder& folder, ELayoutMedia media) {
    SLayoutDescription layout;
    layout.media = media;
    layout.entries = {{18, 18, folder / "A"}, {21, 22, folder / "B"}};
    layout.volumeLast = 25;
    WriteText(folder / "game.iml", LayoutText(layout));
    WriteWhole(folder / "game.ims", LeadingBytes(layout));
    WriteWhole(folder / "A", TextLikeBytes(61, 1));
    WriteWhole(folder / "B", RandomBytes(4000, 2));
}

void Export(const CTestFolder& folder, COperation& operation) {
    const auto choose = [&folder] { return SChosenLayout{folder / "new.iml", ""}; };
    IsoToIml(folder.Path(), "game.iso", choose, operation);
}

void Rebuild(const CTestFolder& folder, COperation& operation) {
    RebuildImage(WindowRebuild(folder.Path(), "game.iml"), operation);
}

std::vector<SWindowCase> Cases() {
    return {
        {"Iso2Cso", WriteUmd,
         [](const CTestFolder& folder, COperation& operation) { IsoToCso(Compression(folder, ".cso"), operation); }},
        {"Cso2Iso", WriteCso,
         [](const CTestFolder& folder, COperation& operation) {
             SCompressionRequest request = WindowExpansion(folder.Path(), "game.cso");
             request.level = 9;
             CsoToIso(request, operation);
         }},
        {"Iso2Dax", WriteUmd,
         [](const CTestFolder& folder, COperation& operation) { IsoToDax(Compression(folder, ".dax"), operation); }},
        {"Dax2Iso", WriteDax,
         [](const CTestFolder& folder, COperation& operation) {
             DaxToIso(WindowDaxExpansion(folder.Path(), "game.dax"), operation);
         }},
        {"Iso2Bin", WriteCd,
         [](const CTestFolder& folder, COperation& operation) {
             CNoConverter converter;
             IsoToBinByConverter(folder.Path(), "game.iso", converter, operation);
         }},
        {"Bin2Iso", WriteBin,
         [](const CTestFolder& folder, COperation& operation) {
             BinToIso(WindowBinToIso(folder.Path(), "game.bin"), operation);
         }},
        {"Iso2ImlCd", WriteCd, Export},
        {"Iso2ImlDvd", WriteDvd, Export},
        {"VantrelCd", [](const CTestFolder& folder) { WriteLayout(folder, ELayoutMedia::Cd); }, Rebuild},
        {"VantrelDvd", [](const CTestFolder& folder) { WriteLayout(folder, ELayoutMedia::Dvd); }, Rebuild},
        {"CheckPostgap", WriteCdWithoutPostgap,
         [](const CTestFolder& folder, COperation& operation) { CheckPostgap({folder / "game.iso"}, operation); }},
        {"AddSelectivePostgap", WriteUmd,
         [](const CTestFolder& folder, COperation& operation) {
             AddSelectivePostgap({.imagePath = folder / "game.iso", .sectors = 3}, operation);
         }},
    };
}

std::string NameOf(const testing::TestParamInfo<SWindowCase>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(All, WindowFaults, testing::ValuesIn(Cases()), NameOf);

}  // namespace
}  // namespace vantrel::test
