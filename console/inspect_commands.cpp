// The commands that only look at files: info, verify and list.
#include <cstdio>
#include <optional>

#include "console/command_input.h"
#include "console/commands.h"
#include "console/console_operation.h"
#include "console/interrupt.h"
#include "console/messages.h"
#include "console/option_set.h"
#include "console/report_text.h"
#include "files/path.h"
#include "files/refused.h"
#include "image/inspect/file_report.h"
#include "image/inspect/verify.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr const char* kFilesText = "Folder in which the relative paths of a layout start";

/// A command that prints a report on each of its files.
class CInspectCommand : public CCommand {
public:
    using CCommand::CCommand;

    void Declare(COptionSet& options) override {
        options.AddFiles(m_files, "The files to look at");
        options.AddFlag("--json", m_json, "Report as JSON, one object in a line for each file");
    }

    EExit Run() final {
        EExit status = EExit::Done;
        for (const std::string& file : m_files) {
            ThrowIfInterrupted();
            try {
                const CReport report = Inspect(file);
                const CReport* ok = report.Find("ok");
                if (ok && !ok->As<bool>()) {
                    status = EExit::Failed;
                }
                PrintResults(m_json ? JsonText(report) : Text(report));
            } catch (const CRefused& refusal) {
                status = EExit::Failed;
                if (m_json) {
                    PrintResults(JsonText({{"file", file}, {"error", refusal.what()}}));
                }
                PrintError(Name(), file, refusal.what());
            }
        }
        return status;
    }

private:
    /// The report on one file. A member "ok" that is false makes the exit status 1. Throws CRefused if there is nothing
    /// to report.
    virtual CReport Inspect(const std::string& file) const = 0;
    /// The report for people.
    virtual std::string Text(const CReport& report) const { return PlainText(report, IsTerminal(EStream::Output)); }

    std::vector<std::string> m_files;
    bool m_json = false;
};

class CInfoCommand : public CInspectCommand {
public:
    CInfoCommand()
        : CInspectCommand({"info", "Identify a file by its content",
                           "Examples:\n  vantrel info game.cso\n  vantrel info --json *.iso | jq .image.kind"}) {}

    void Declare(COptionSet& options) override {
        CInspectCommand::Declare(options);
        options.AddText("--files", m_filesFolder, kFilesText);
    }

private:
    CReport Inspect(const std::string& file) const override { return ReportOnFile(file, m_filesFolder); }

    std::string m_filesFolder;
};

class CVerifyCommand : public CInspectCommand {
public:
    CVerifyCommand()
        : CInspectCommand(
              {"verify", "Check everything in a file, and print the checksums of its image",
               "Public disc databases identify images by these checksums. The exit status is 1 if anything is wrong.\n"
               "Examples:\n  vantrel verify game.bin\n  vantrel verify game.cso --against game.iso"}) {}

    void Declare(COptionSet& options) override {
        CInspectCommand::Declare(options);
        options.AddText("--against", m_against, "Compare with the image in this file instead, whatever its form");
        options.AddText("--dat", m_datPath, "Look the image up in this disc database, an XML file of Logiqx");
        options.Exclude("--dat", "--against");
        options.AddText("--files", m_filesFolder, kFilesText);
    }

private:
    CReport Inspect(const std::string& file) const override {
        CProgressLine progress(CanDrawProgress(), FileNameOf(file), InputOf(file).bytes);
        CConsoleOperation operation(progress);
        return m_against.empty() ? VerifyFile(file, operation, {Dat(), m_filesFolder})
                                 : CompareImages(file, m_against, operation);
    }

    /// The database, which is read with the first file; null if there is none.
    const CDatFile* Dat() const {
        if (!m_datPath.empty() && !m_dat) {
            m_dat.emplace(m_datPath);
        }
        return m_dat ? &*m_dat : nullptr;
    }

    std::string m_against;
    std::string m_datPath;
    std::string m_filesFolder;
    mutable std::optional<CDatFile> m_dat;
};

class CListCommand : public CInspectCommand {
public:
    CListCommand()
        : CInspectCommand({"list", "List the files in an image: first sector, bytes, path",
                           "Examples:\n  vantrel list game.iso\n  vantrel list --json game.dax"}) {}

private:
    CReport Inspect(const std::string& file) const override { return ReportOnContents(file); }

    std::string Text(const CReport& report) const override {
        std::string text;
        for (const CReport& file : report["files"].As<CReport::List>()) {
            text += Format("%8lld %10lld %s\n", static_cast<long long>(file["sector"].As<std::int64_t>()),
                           static_cast<long long>(file["bytes"].As<std::int64_t>()),
                           Shown(file["path"].As<std::string>(), EStream::Output).c_str());
        }
        return text;
    }
};

}  // namespace

void AddInspectCommands(Commands& commands) {
    commands.push_back(std::make_unique<CInfoCommand>());
    commands.push_back(std::make_unique<CVerifyCommand>());
    commands.push_back(std::make_unique<CListCommand>());
}

}  // namespace vantrel
