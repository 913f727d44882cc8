#include "console/inspect_command.h"

#include <cstdio>
#include <memory>

#include "console/file_patterns.h"
#include "console/interrupt.h"
#include "console/refused.h"

namespace vantrel {

namespace {

struct SOptions {
    std::vector<std::string> files;
    bool json = false;
};

int Inspect(const SInspectCommand& command, const SOptions& options) {
    bool good = true;
    for (const std::string& file : options.files) {
        ThrowIfInterrupted();
        try {
            const Report report = command.inspect(file);
            good = good && report.value("ok", true);
            if (options.json) {
                std::printf("%s\n", report.dump(2, ' ', false, Report::error_handler_t::replace).c_str());
            } else if (command.print) {
                command.print(report);
            } else {
                PrintReport(report);
            }
            std::fflush(stdout);
        } catch (const CRefused& refusal) {
            good = false;
            std::fflush(stdout);
            std::fprintf(stderr, "vantrel %s: %s\n", command.name.c_str(), refusal.what());
        }
    }
    return static_cast<int>(good ? EExit::Done : EExit::Failed);
}

/// A member's name for people: "first_address" becomes "first address".
std::string LabelOf(std::string name) {
    std::replace(name.begin(), name.end(), '_', ' ');
    return name;
}

std::string ValueText(const Report& value) {
    if (value.is_boolean()) {
        return value.get<bool>() ? "yes" : "no";
    }
    return value.is_string() ? value.get<std::string>() : value.dump();
}

}  // namespace

void PrintReport(const Report& report, int indent) {
    for (const auto& [name, value] : report.items()) {
        if (value.is_object()) {
            std::printf("%*s%s:\n", indent, "", LabelOf(name).c_str());
            PrintReport(value, indent + 2);
        } else if (value.is_array()) {
            std::printf("%*s%s:%s\n", indent, "", LabelOf(name).c_str(), value.empty() ? " none" : "");
            for (const Report& element : value) {
                std::printf("%*s%s\n", indent + 2, "", ValueText(element).c_str());
            }
        } else {
            std::printf("%*s%s: %s\n", indent, "", LabelOf(name).c_str(), ValueText(value).c_str());
        }
    }
}

std::string FieldText(std::span<const std::uint8_t> field) {
    std::string text(field.begin(), field.end());
    text.erase(text.find_last_not_of(std::string(" \0", 2)) + 1);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, '?');
    return text;
}

void AddInspectCommand(CLI::App& app, ChosenCommand& chosen, SInspectCommand command) {
    CLI::App* subcommand = app.add_subcommand(command.name, command.summary);
    subcommand->footer(command.examples);
    const auto options = std::make_shared<SOptions>();
    subcommand->add_option("FILE", options->files, "The files to look at")->required();
    subcommand->add_flag("--json", options->json, "Report as JSON, one object for each file");
    if (command.addOptions) {
        command.addOptions(*subcommand);
    }
    const auto shared = std::make_shared<SInspectCommand>(std::move(command));
    subcommand->callback([&chosen, options, shared] {
        options->files = CommandFiles(options->files);
        chosen = [options, shared] { return Inspect(*shared, *options); };
    });
}

}  // namespace vantrel
