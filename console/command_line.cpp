#include "console/command_line.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <memory>

#include "console/commands.h"
#include "console/help_formatter.h"
#include "console/interrupt.h"
#include "files/native_console.h"
#include "files/native_file.h"

namespace vantrel {

namespace {

constexpr const char* kDescription =
    "Converts disc images of PlayStation 2 and PSP titles between ISO, IML layout, BIN/CUE, CSO and DAX.";

/// The options of CLI11 and what the chosen command will do. They belong together, because commands look at their
/// options when they run.
struct SParser {
    CLI::App app{kDescription, "vantrel"};
    ChosenCommand chosen;

    SParser() {
        app.set_version_flag("--version", "vantrel " VANTREL_VERSION);
        app.require_subcommand(1);
        // A word that begins with '/' is a path, on Windows too.
        app.allow_windows_style_options(false);
        app.formatter(std::make_shared<CHelpFormatter>());
        AddCompressCommands(app, chosen);
        AddInspectCommands(app, chosen);
        AddExtractCommand(app, chosen);
        AddExportCommands(app, chosen);
        AddRawCommands(app, chosen);
        AddRebuildCommands(app, chosen);
        for (CLI::App* command : app.get_subcommands({})) {
            command->group("Commands");
        }
    }
};

}  // namespace

SCommandLine ReadCommandLine(std::vector<std::string> words, std::ostream& out, std::ostream& errors) {
    const auto parser = std::make_shared<SParser>();
    // CLI11 takes the words from the back.
    std::reverse(words.begin(), words.end());
    try {
        parser->app.parse(std::move(words));
    } catch (const CLI::ParseError& error) {
        const bool good = parser->app.exit(error, out, errors) == 0;
        return {static_cast<int>(good ? EExit::Done : EExit::Usage), {}};
    }
    return {std::nullopt, [parser] { return parser->chosen(); }};
}

namespace {

/// The status to end with. Results that nobody could read are a failure, whatever else went well.
int WithResultsWritten(int status) {
    std::cout.flush();
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && std::cout.good()) {
        return status;
    }
    std::fprintf(stderr, "vantrel: cannot write the results: %s\n", LastFileError().c_str());
    return static_cast<int>(EExit::Failed);
}

}  // namespace

int RunCommandLine(std::vector<std::string> words) {
    const SCommandLine read = ReadCommandLine(std::move(words), std::cout, std::cerr);
    if (read.status) {
        return WithResultsWritten(*read.status);
    }
    UseUtf8Console();
    CatchInterrupts();
    try {
        return WithResultsWritten(read.action());
    } catch (const CInterrupted& interruption) {
        std::fputs("vantrel: interrupted; nothing unfinished was kept\n", stderr);
        return interruption.ExitStatus();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vantrel: %s\n", error.what());
        return static_cast<int>(EExit::Failed);
    }
}

}  // namespace vantrel
