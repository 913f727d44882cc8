// Words and names: the command lines of both console programs, and the lines that other programs will interpret (batch
// file, CUE sheet, quoted arguments).
//
//      8 bits  'c': a command line of the console program; anything else: the rest, which is much quicker
//     then words, each ended by a line feed
#include <algorithm>
#include <sstream>

#include "app/converter/quoted_arguments.h"
#include "console/command_line.h"
#include "files/path.h"
#include "files/utf.h"
#include "fuzz/expect.h"
#include "fuzz/memory_file.h"
#include "image/form.h"
#include "app/converter/batch_line.h"
#include "raw/converter.h"
#include "raw/cue_sheet.h"

namespace vantrel::fuzz {

namespace {

using Words = std::vector<std::string>;

Words WordsOf(std::string_view text) {
    Words words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view word = text.substr(0, end);
        words.emplace_back(word.substr(0, word.find('\0')));  // as words reach a program
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

void ReadCommand(const Words& words) {
    std::ostringstream out;
    std::ostringstream errors;
    const SCommandLine read = ReadCommandLine(words, out, errors);
    Expect(read.status.has_value() != static_cast<bool>(read.action), "there is either something to do or a status");
    if (read.status) {
        Expect(*read.status == 0 || *read.status == 2, "help, or wrong usage");
        Expect(!(*read.status == 0 ? out : errors).str().empty(), "which says so");
    } else {
        Expect(out.str().empty() && errors.str().empty(), "nothing is said about what is understood");
    }
}

void RunConverterOn(const Words& words) {
    ClearDisk(1 << 20U);
    PutFile(std::string(kFolder) + "in", Bytes(3 * 2048));
    std::ostringstream progress;
    std::ostringstream errors;
    const EConverterExit exit = RunConverter(words, progress, errors);
    Expect((exit == EConverterExit::Done) == errors.str().empty(), "what went wrong is told");
}

/// The words that the command processor makes of a line in which it interprets nothing.
Words SplitAtBlanks(const std::string& line) {
    std::istringstream stream(line);
    Words words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

void WriteLines(const std::string& folder, const SConverterCall& call) {
    const std::string line = BatchLineOf(call);
    if (IsBatchLineSafe(folder, call)) {
        Expect(line.find_first_of("%^&|<>()\"!'`,;=@\r\t\v\f\x1A*?~:\\") == std::string::npos,
               "a batch line holds nothing that is interpreted");
        Expect(std::all_of(line.begin(), line.end(), [](char c) { return c == '\n' || (c >= ' ' && c < '\x7F'); }),
               "a batch line is plain ASCII");
        Expect(line.find('\n') == line.size() - 1, "a batch file has one line");
        Words wanted = ArgumentsOf(call);
        wanted.insert(wanted.begin(), "tmpfile");
        Expect(SplitAtBlanks(line) == wanted, "a batch line is the call");
    }
    if (CanStandInCueSheet(call.outputName)) {
        const std::string sheet = CueSheetOf(call.outputName);
        Expect(std::count(sheet.begin(), sheet.end(), '\n') == 3, "a sheet has three lines");
        Expect(std::count(sheet.begin(), sheet.end(), '"') == 2, "a sheet has one quoted name");
        Expect(sheet.starts_with("FILE \"" + call.outputName + "\" BINARY\n"), "a sheet names its image");
    }
}

/// A second implementation of how programs for Windows read their command line: 2n backslashes before a quote are n,
/// 2n + 1 are n and a quote that is text.
Words ReadQuoted(const std::string& line) {
    Words words;
    std::string word;
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const std::size_t end = std::min(line.find_first_not_of('\\', i), line.size());
        const std::size_t backslashes = end - i;
        if (backslashes > 0) {
            const bool beforeQuote = end < line.size() && line[end] == '"';
            word.append(beforeQuote ? backslashes / 2 : backslashes, '\\');
            i = end - 1;
            if (beforeQuote && backslashes % 2 != 0) {
                word += '"';
                i = end;
            }
        } else if (line[i] == '"') {
            quoted = !quoted;
        } else if (line[i] == ' ' && !quoted) {
            words.push_back(word);
            word.clear();
        } else {
            word += line[i];
        }
    }
    words.push_back(word);
    return words;
}

void TakeApart(const std::string& path) {
    const SPathParts parts = SplitPath(path);
    Expect(parts.drive + parts.folder + parts.name + parts.extension == path, "a path is the sum of its parts");
    const std::string base = BaseNameOf(FileNameOf(path));
    Expect(base.size() <= 30 && base.find('.') == std::string::npos, "a base name is short and has no dot");
    Expect(Utf8Of(WideOf(path)) == path, "no byte of a name is lost");
}

}  // namespace

}  // namespace vantrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel::fuzz;
    if (size == 0) {
        return 0;
    }
    Words words = WordsOf({reinterpret_cast<const char*>(data) + 1, size - 1});
    if (data[0] == 'c') {
        ReadCommand(words);
        return 0;
    }
    RunConverterOn(words);
    for (const std::string& word : words) {
        TakeApart(word);
    }
    if (!words.empty()) {
        Expect(ReadQuoted(vantrel::QuotedCommandLine(words)) == words, "quoted words are read as they were");
    }
    words.resize(std::max<std::size_t>(words.size(), 3));
    WriteLines(words[0], {words[1] + ".iso", words[2] + ".bin", size % 2 != 0});
    return 0;
}
