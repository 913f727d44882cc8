// Words and names: the command lines of both console programs, and texts for other programs (batch file, CUE sheet,
// quoted arguments).
//
//      8 bits  'c': a command line of the console program; otherwise everything else, which is much faster
//     then words, each with a line feed at its end
#include <algorithm>
#include <sstream>

#include "app/converter/batch_line.h"
#include "app/converter/quoted_arguments.h"
#include "console/command_line.h"
#include "files/path.h"
#include "files/utf.h"
#include "fuzz/expect.h"
#include "fuzz/memory_disk.h"
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
        words.emplace_back(word.substr(0, word.find('\0')));  // Words of a program end at NUL.
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

void ReadCommand(const Words& words) {
    std::ostringstream out;
    std::ostringstream errors;
    const SCommandLine read = ReadCommandLine(words, out, errors);
    Expect(read.status.has_value() != static_cast<bool>(read.action), "there is either an action or a status");
    if (read.status) {
        Expect(*read.status != EExit::Failed, "reading the words does not fail");
        Expect(!(*read.status == EExit::Done ? out : errors).str().empty(), "help and wrong usage have a text");
    } else {
        Expect(out.str().empty() && errors.str().empty(), "correct usage has no text");
    }
}

void RunConverterOn(const Words& words) {
    ClearDisk(1 << 20U);
    PutFile(std::string(kFolder) + "in", Bytes(3 * 2048));
    std::ostringstream progress;
    std::ostringstream errors;
    const EConverterExit exit = RunConverter(words, progress, errors);
    Expect((exit == EConverterExit::Done) == errors.str().empty(), "exactly a failure has a message");
}

/// The words of a line in which the command processor interprets nothing.
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
               "a batch line has no characters that are interpreted");
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

/// A second implementation of how Windows programs split their command line: 2n backslashes before a quote mean n
/// backslashes, and 2n + 1 mean n and a literal quote.
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

void SplitName(const std::string& path) {
    const SPathParts parts = SplitPath(path);
    Expect(parts.drive + parts.folder + parts.name + parts.extension == path, "the parts of a path make up the path");
    const std::string base = BaseNameOf(FileNameOf(path));
    Expect(WideOf(base).size() <= 30 && base.find('.') == std::string::npos,
           "a base name has 30 characters at most and no dot");
    Expect(Utf8Of(WideOf(path)) == path, "every name survives the conversion to UTF-16");
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
        SplitName(word);
    }
    if (!words.empty()) {
        Expect(ReadQuoted(vantrel::QuotedCommandLine(words)) == words, "quoted words are read unchanged");
    }
    words.resize(std::max<std::size_t>(words.size(), 3));
    WriteLines(words[0], {words[1] + ".iso", words[2] + ".bin", size % 2 != 0});
    return 0;
}
