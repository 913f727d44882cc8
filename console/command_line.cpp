#include "console/command_line.h"

#include <algorithm>
#include <cstdio>

#include "console/commands.h"
#include "console/help_formatter.h"
#include "console/interrupt.h"
#include "files/native_console.h"

namespace vantrel {

namespace {

constexpr const char* kDescription =
    "Converts disc images of PlayStation 2 and PSP titles between ISO, IML layout, BIN/CUE, CSO and DAX.";

/// What Parse gives when the words asked for help or the version, which has then been printed.
constexpr int kHelpShown = -1;

int Parse(CLI::App& app, std::vector<std::string> words) {
    // CLI11 takes the words from the back.
    std::reverse(words.begin(), words.end());
    try {
        app.parse(std::move(words));
        return static_cast<int>(EExit::Done);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kHelpShown : static_cast<int>(EExit::Usage);
    }
}

}  // namespace

int RunCommandLine(std::vector<std::string> words) {
    CLI::App app(kDescription, "vantrel");
    ChosenCommand chosen;
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

    const int usage = Parse(app, std::move(words));
    if (usage != static_cast<int>(EExit::Done)) {
        return usage == kHelpShown ? 0 : usage;
    }
    UseUtf8Console();
    CatchInterrupts();
    try {
        return chosen();
    } catch (const CInterrupted& interruption) {
        std::fputs("vantrel: interrupted; nothing unfinished was kept\n", stderr);
        return interruption.ExitStatus();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vantrel: %s\n", error.what());
        return static_cast<int>(EExit::Failed);
    }
}

}  // namespace vantrel
