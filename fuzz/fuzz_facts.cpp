// Small files that only reports read, and the check of a layout's lines.
//
//      8 bits  remainder of a division by 4: SYSTEM.CNF, PARAM.SFO, a disc database or a layout
//     then the file
#include <algorithm>

#include "files/input_file.h"
#include "files/refused.h"
#include "fuzz/expect.h"
#include "fuzz/input_parts.h"
#include "fuzz/memory_disk.h"
#include "image/inspect/dat_file.h"
#include "image/inspect/title.h"
#include "iml/layout/layout_check.h"
#include "iml/layout/layout_summary.h"

namespace vantrel::fuzz {

namespace {

const std::string kFile = std::string(kFolder) + "file";

bool IsDiscId(const std::string& text) {
    constexpr std::string_view kForm = "AAAA-00000";
    return std::ranges::equal(text, kForm, [](char c, char form) {
        return form == 'A' ? c >= 'A' && c <= 'Z' : form == '0' ? c >= '0' && c <= '9' : c == form;
    });
}

void ReadSystemCnf(std::span<const std::uint8_t> file) {
    const std::string id = DiscIdOfSystemCnf(TextOf(file));
    Expect(id.empty() || IsDiscId(id), "a disc number has four letters and five digits");
}

void ReadParamSfo(std::span<const std::uint8_t> file) {
    const STitle title = TitleOfParamSfo(file);
    Expect(title.discId.empty() || IsDiscId(title.discId), "a disc number has four letters and five digits");
    Expect(TextOf(file).find(title.name) != std::string::npos, "a title is in the file");
    Expect(title.name.find('\0') == std::string::npos, "a title ends at NUL");
}

/// Looks up the sums of the seeds.
void ReadDatabase(std::span<const std::uint8_t> file) {
    const SSums sums = {4096, "c71c0011", "ab", "cd"};
    PutFile(kFile, file);
    try {
        const SDatEntry* const entry = CDatFile(kFile).Find(sums);
        Expect(entry == nullptr || TextOf(file).find("4096") != std::string::npos, "an entry has the size");
    } catch (const CRefused& refusal) {
        Expect(std::string_view(refusal.what()).starts_with(kFile + ": not a disc database: "), "a refusal says why");
    }
}

/// What a reader by columns finds in a layout without a problem: every entry with a path.
void ExpectAllEntries() {
    try {
        const SLayoutSummary summary = SummarizeLayout(kFile, kFolder);
        const int others = summary.media == "DVD" ? 2 : 1;
        Expect(static_cast<int>(summary.files.size()) == summary.entries - others, "every counted entry is read");
        Expect(std::ranges::none_of(summary.files, [](const SLayoutFile& listed) { return listed.path.empty(); }),
               "every entry has a path");
    } catch (const CRefused&) {
        // no known medium, or fewer entries than every layout has
    }
}

void CheckLayout(std::span<const std::uint8_t> file) {
    PutFile(kFile, file);
    CInputFile layout;
    layout.Open(kFile);
    const std::string problem = LayoutProblem(layout);
    layout.Close();
    if (problem.empty()) {
        ExpectAllEntries();
        return;
    }
    int line = 0;
    Expect(std::sscanf(problem.c_str(), "line %d: ", &line) == 1, "a problem names its line");
    const auto lines = std::count(file.begin(), file.end(), std::uint8_t{'\n'});
    Expect(line >= 1 && line <= lines + 2, "a problem is in a line of the layout or behind the last");
}

}  // namespace

}  // namespace vantrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel::fuzz;
    CInputParts parts({data, size});
    ClearDisk(1 << 20U);
    switch (parts.Byte() % 4) {
        case 0:
            ReadSystemCnf(parts.Rest());
            break;
        case 1:
            ReadParamSfo(parts.Rest());
            break;
        case 2:
            ReadDatabase(parts.Rest());
            break;
        default:
            CheckLayout(parts.Rest());
    }
    return 0;
}
