// The command line: which words run a command, and what the others answer.
#include "console/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace vantrel {
namespace {

using testing::HasSubstr;

/// The error message for wrong usage; "correct" if there is none.
std::string UsageError(const std::vector<std::string>& words) {
    std::ostringstream out;
    std::ostringstream errors;
    const SCommandLine read = ReadCommandLine(words, out, errors);
    EXPECT_EQ(read.status.has_value(), !read.action);
    EXPECT_EQ(out.str(), "");
    if (!read.status) {
        return "correct" + errors.str();
    }
    EXPECT_EQ(*read.status, EExit::Usage);
    return errors.str();
}

TEST(CommandLine, CorrectWordsRunACommand) {
    EXPECT_EQ(UsageError({"iso2cso", "a.iso", "b.iso", "-l", "1", "-j4", "--output-dir", "/tmp", "-fqk"}), "correct");
    EXPECT_EQ(UsageError({"iso2iml", "a.iso", "--extract"}), "correct") << "an optional value";
    EXPECT_EQ(UsageError({"iso2iml", "a.iso", "--extract=files"}), "correct");
    EXPECT_EQ(UsageError({"add-postgap", "--count", "9", "a.iso"}), "correct");
    EXPECT_EQ(UsageError({"extract", "a.iso", "A.TXT", "DIR", "-C", "out"}), "correct");
    EXPECT_EQ(UsageError({"verify", "--json", "a.cso", "--against", "a.iso"}), "correct");
}

TEST(CommandLine, WrongUsageIsExplained) {
    EXPECT_THAT(UsageError({}), HasSubstr("Usage: vantrel COMMAND")) << "the help";
    EXPECT_THAT(UsageError({"iso2cso"}), HasSubstr("FILE is required"));
    EXPECT_THAT(UsageError({"iso2cso", "a.iso", "-l", "10"}), HasSubstr("--level: Value 10 not in range 1 to 9"));
    EXPECT_THAT(UsageError({"iso2cso", "a.iso", "-j", "0"}), HasSubstr("--jobs: Value 0 not in range 1 to 256"));
    EXPECT_THAT(UsageError({"iso2cso", "a.iso", "-o", "x", "--output-dir", "y"}), HasSubstr("excludes"));
    EXPECT_THAT(UsageError({"iso2cso", "a.iso", "b.iso", "-o", "x"}),
                HasSubstr("--output: names one file, but there are 2 inputs"));
    EXPECT_THAT(UsageError({"iso2cso", "a.iso", "-o"}), HasSubstr("vantrel iso2cso: --output: needs a value\n"));
    EXPECT_THAT(UsageError({"iso2cso", "a.iso", "-o", "x", "-o", "y"}),
                HasSubstr("--output: may be given only once\n"));
    EXPECT_THAT(UsageError({"add-postgap", "a.iso"}), HasSubstr("--count is required"));
    EXPECT_THAT(UsageError({"iso2iml", "a.iso", "--extract=" + std::string(VANTREL_SOURCE_DIR "/CMakeLists.txt")}),
                HasSubstr("is a file; give FILE before --extract"));
    EXPECT_THAT(UsageError({"check-postgap", "a.iso", "-o", "b.iso"}), HasSubstr("-o")) << "works in place";
}

TEST(CommandLine, UnknownWordsAreEchoedWithTheNearestKnownOne) {
    EXPECT_EQ(UsageError({"is2cso", "a.iso"}),
              "vantrel: unknown command is2cso; did you mean iso2cso?\n\"vantrel --help\" shows the usage.\n");
    EXPECT_EQ(UsageError({"game.iso"}), "vantrel: unknown command game.iso\n\"vantrel --help\" shows the usage.\n");
    EXPECT_EQ(UsageError({"help", "lits"}),
              "vantrel: unknown command lits; did you mean list?\n\"vantrel --help\" shows the usage.\n");
    EXPECT_EQ(UsageError({"iso2cso", "--levle=3", "a.iso"}),
              "vantrel iso2cso: unknown option --levle; did you mean --level?\n"
              "\"vantrel iso2cso --help\" shows the usage.\n");
    EXPECT_THAT(UsageError({"iso2cso", "a.iso", "-x"}), HasSubstr("vantrel iso2cso: unknown option -x\n"));
    EXPECT_THAT(UsageError({"--vresion"}), HasSubstr("vantrel: unknown option --vresion; did you mean --version?\n"));
}

TEST(CommandLine, HelpAndVersionGoToStandardOutput) {
    for (const std::vector<std::string>& words : {std::vector<std::string>{"--help"},
                                                  {"--version"},
                                                  {"-V"},
                                                  {"iso2cso", "--help"},
                                                  {"help"},
                                                  {"help", "iso2cso"}}) {
        std::ostringstream out;
        std::ostringstream errors;
        const SCommandLine read = ReadCommandLine(words, out, errors);
        EXPECT_EQ(read.status, EExit::Done);
        EXPECT_NE(out.str(), "");
        EXPECT_EQ(errors.str(), "");
    }
}

TEST(CommandLine, HelpShowsWhatACommandRequires) {
    for (const char* usage : {"iso2cso [options] FILE...", "extract [options] FILE [PATH...]",
                              "replace [options] IMAGE CHANGE...", "add-postgap [options] --count N FILE..."}) {
        std::ostringstream out;
        std::ostringstream errors;
        const std::string line = usage;
        ReadCommandLine({"help", line.substr(0, line.find(' '))}, out, errors);
        EXPECT_THAT(out.str(), HasSubstr("Usage: vantrel " + line + "\n"));
    }
}

}  // namespace
}  // namespace vantrel
