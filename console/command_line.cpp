#include "console/command_line.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cstdio>
#include <iostream>
#include <sstream>

#include "console/commands.h"
#include "console/interrupt.h"
#include "console/messages.h"
#include "console/option_set.h"
#include "console/suggestion.h"
#include "console/wrapping.h"
#include "files/native_console.h"

namespace vantrel {

namespace {

constexpr const char* kDescription =
    "Converts disc images of PlayStation 2 and PSP titles between ISO, IML layout, BIN/CUE, CSO, ZSO and DAX.";
constexpr std::size_t kHelpColumnWidth = 26;

/// How --help looks. The manual page and the completions are made from these texts, so their form is fixed here.
class CHelpFormatter : public CLI::Formatter {
public:
    CHelpFormatter() { column_width(kHelpColumnWidth); }

    std::string make_usage(const CLI::App* app, std::string /*name*/) const override {
        if (app->get_parent() == nullptr) {
            return "Usage: vantrel COMMAND [options] FILE...\n       vantrel help COMMAND\n";
        }
        std::string words;
        std::string positionals;
        for (const CLI::Option* option : app->get_options()) {
            const bool isRequired = option->get_required();
            const std::string word = option->get_name() + make_option_opts(option);
            if (option->get_positional()) {
                positionals += isRequired ? " " + word : " [" + word + "]";
            } else if (isRequired) {
                words += " " + word;
            }
        }
        return "Usage: vantrel " + app->get_name() + " [options]" + words + positionals + "\n";
    }

    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override {
        return Wrapped(CLI::Formatter::make_help(app, std::move(name), mode), kHelpColumnWidth);
    }

    /// "-l,--level N" instead of the library's type names.
    std::string make_option_opts(const CLI::Option* option) const override {
        if (option->get_positional() || option->get_type_name().empty()) {
            return option->get_expected_max() > 1 ? "..." : "";
        }
        const std::string type = option->get_type_name();
        return type.starts_with("INT") ? " N" : type.starts_with("TEXT") ? " PATH" : " " + type;
    }
};

Commands AllCommands() {
    Commands commands;
    AddCompressCommands(commands);
    AddConvertCommand(commands);
    AddInspectCommands(commands);
    AddExtractCommand(commands);
    AddExportCommand(commands);
    AddRawCommands(commands);
    AddRebuildCommand(commands);
    AddReplaceCommand(commands);
    AddPostgapCommands(commands);
    return commands;
}

/// All commands, and which of them a command line calls.
class CParser {
public:
    CParser() {
        m_app.set_version_flag("-V,--version", "vantrel " VANTREL_VERSION);
        m_app.require_subcommand(1);
        // A word that begins with '/' is a path, also on Windows.
        m_app.allow_windows_style_options(false);
        m_app.formatter(std::make_shared<CHelpFormatter>());
        for (const std::unique_ptr<CCommand>& command : m_commands) {
            Declare(*command);
        }
    }

    /// Returns the exit status if nothing is left to be done, and nullopt if the words call a command.
    std::optional<EExit> Read(std::vector<std::string> words, std::ostream& out, std::ostream& errors) {
        if (words.empty()) {
            errors << m_app.help();
            return EExit::Usage;
        }
        if (words.front() == "help") {
            std::erase(words, "help");
            words.emplace_back("--help");
        }
        if (!words.front().starts_with('-') && !IsCommand(words.front())) {
            return FailUsage(errors, "", Unknown("command", words.front(), CommandNames()));
        }
        // The library takes the words from the back.
        std::reverse(words.begin(), words.end());
        try {
            m_app.parse(std::move(words));
            return std::nullopt;
        } catch (const CLI::Success& success) {
            m_app.exit(success, out, errors);
            return EExit::Done;
        } catch (const CLI::ParseError& error) {
            return FailUsage(errors, CalledName(), ProblemOf(error));
        }
    }

    EExit Run() { return m_called->Run(); }

private:
    static EExit FailUsage(std::ostream& errors, const std::string& command, const std::string& problem) {
        const std::string name = command.empty() ? "vantrel" : "vantrel " + command;
        errors << name << ": " << problem << "\n\"" << name << " --help\" shows the usage.\n";
        return EExit::Usage;
    }

    static std::string Unknown(const char* noun, const std::string& word, const std::vector<std::string>& known) {
        const std::string nearest = NearestWord(word, known);
        return std::string("unknown ") + noun + " " + word + (nearest.empty() ? "" : "; did you mean " + nearest + "?");
    }

    /// The name of the command that was read; empty if there was none.
    std::string CalledName() const {
        const std::vector<CLI::App*> called = m_app.get_subcommands();
        return called.empty() ? std::string() : called.front()->get_name();
    }

    bool IsCommand(const std::string& word) const {
        return std::any_of(m_commands.begin(), m_commands.end(),
                           [&word](const std::unique_ptr<CCommand>& command) { return command->Name() == word; });
    }

    std::vector<std::string> CommandNames() const {
        std::vector<std::string> names = {"help"};
        for (const std::unique_ptr<CCommand>& command : m_commands) {
            names.push_back(command->Name());
        }
        return names;
    }

    static std::vector<std::string> OptionNames(const CLI::App& app) {
        std::vector<std::string> names;
        for (const CLI::Option* option : app.get_options()) {
            for (const std::string& name : option->get_lnames()) {
                names.push_back("--" + name);
            }
        }
        return names;
    }

    std::string ProblemOf(const CLI::ParseError& error) const {
        const std::vector<CLI::App*> called = m_app.get_subcommands();
        const CLI::App& app = called.empty() ? m_app : *called.front();
        const std::vector<std::string> unread = app.remaining(true);
        if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
            const std::string text = error.what();
            const std::string problem = text.ends_with("missing") ? ": needs a value" : ": may be given only once";
            return text.substr(0, text.find(':')) + problem;
        }
        if (unread.empty() || !unread.front().starts_with('-')) {
            return error.what();
        }
        const std::string option = unread.front().substr(0, unread.front().find('='));
        return Unknown("option", option, OptionNames(app));
    }

    void Declare(CCommand& command) {
        const SCommandTexts& texts = command.Texts();
        CLI::App* app = m_app.add_subcommand(texts.name, texts.summary);
        app->group("Commands");
        app->footer(texts.notes);
        COptionSet options(*app);
        command.Declare(options);
        app->final_callback([this, &command] {
            if (const std::string problem = command.UsageProblem(); !problem.empty()) {
                throw CLI::ValidationError(problem);
            }
            m_called = &command;
        });
    }

    CLI::App m_app{kDescription, "vantrel"};
    Commands m_commands = AllCommands();
    CCommand* m_called = nullptr;
};

}  // namespace

SCommandLine ReadCommandLine(std::vector<std::string> words, std::ostream& out, std::ostream& errors) {
    const auto parser = std::make_shared<CParser>();
    const std::optional<EExit> status = parser->Read(std::move(words), out, errors);
    if (status) {
        return {status, {}};
    }
    return {std::nullopt, [parser] { return parser->Run(); }};
}

int RunCommandLine(std::vector<std::string> words) {
    UseUtf8Console();
    CatchInterrupts();
    try {
        std::ostringstream out;
        const SCommandLine read = ReadCommandLine(std::move(words), out, std::cerr);
        PrintResults(out.str());
        return static_cast<int>(read.status ? *read.status : read.action());
    } catch (const CInterrupted& interruption) {
        std::fputs("vantrel: interrupted; nothing unfinished was kept\n", stderr);
        return interruption.ExitStatus();
    } catch (const CResultsLost& loss) {
        return loss.Report();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vantrel: %s\n", error.what());
        return static_cast<int>(EExit::Failed);
    }
}

}  // namespace vantrel
