// The command that replaces files in an image.
#include <algorithm>

#include "console/command_input.h"
#include "console/commands.h"
#include "console/console_operation.h"
#include "console/conversion_command.h"
#include "console/edit_result.h"
#include "console/messages.h"
#include "console/option_set.h"
#include "files/leftovers.h"
#include "files/native_file.h"
#include "files/path.h"
#include "files/refused.h"
#include "image/conversion.h"
#include "iso/edit/replacement.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr const char* kNotes =
    "CHANGE is PATH=FILE: the file PATH of the image gets the content of FILE. PATH may be in upper or lower case, "
    "with "
    "/ or \\ between folders and name; an empty FILE empties it.\n"
    "\n"
    "A file stays at its sector if it fits there or if the sectors behind it are free. Otherwise it moves behind "
    "everything else. No other file moves, and everything that describes the changed files is corrected: directories, "
    "also those of Joliet, UDF, and the sizes of the volumes.\n"
    "\n"
    "Examples:\n"
    "  vantrel replace game.iso SYSTEM.CNF=my.cnf -o new.iso\n"
    "  vantrel replace game.cso PSP_GAME/USRDIR/TEXT.BIN=text.bin -o new.iso\n"
    "  vantrel replace game.iso --in-place --dry-run DATA/TEXT.BIN=text.bin";

class CReplaceCommand : public CCommand {
public:
    CReplaceCommand() : CCommand({"replace", "Replace files in an image", kNotes}) {}

    void Declare(COptionSet& options) override {
        options.AddText("IMAGE", m_image, "The image: ISO, CSO, ZSO, DAX, BIN or CUE sheet");
        options.Require("IMAGE");
        options.AddTexts("CHANGE", m_changes, "PATH=FILE for each file to replace");
        options.Require("CHANGE");
        options.AddText("-o,--output", m_output, "Write the new image, an ISO, to this path");
        options.AddFlag("--in-place", m_inPlace, "Change the image, which must be an ISO, itself");
        options.Exclude("--in-place", "--output");
        options.AddFlag("-f,--force", m_force, "Replace an existing output");
        options.AddFlag("--sync", m_sync, "Write a new output to the disk before the end, as a replaced one always is");
        options.AddFlag("--keep-places", m_keepPlaces, "Refuse changes for which a file would have to move");
        options.AddFlag("--dry-run", m_dryRun, "Write nothing, and report what would change");
        options.AddFlag("--json", m_json, "Report as JSON");
        options.AddFlag("-q,--quiet", m_quiet, "Print errors only");
    }

    std::string UsageProblem() const override {
        for (const std::string& change : m_changes) {
            const std::size_t equals = change.find('=');
            if (equals == std::string::npos || equals == 0 || equals + 1 == change.size()) {
                return "CHANGE: \"" + change + "\" is not PATH=FILE";
            }
        }
        return m_output.empty() && !m_inPlace && !m_dryRun ? "needs --output or --in-place" : "";
    }

    EExit Run() override {
        try {
            return Replace();
        } catch (const CConversionFailed& failure) {
            Report(FailureText(failure));
        } catch (const CRefused& refusal) {
            Report(refusal.what());
        }
        return EExit::Failed;
    }

private:
    void Report(const std::string& problem) const {
        if (m_json) {
            PrintResults(FailureJson(m_image, problem));
        }
        PrintError(Name(), m_image, problem);
    }

    SReplaceRequest Request() const {
        SReplaceRequest request;
        request.imagePath = m_image;
        request.outputPath = m_output;
        request.manner = MannerOf(m_force, m_sync);
        request.rules.keepPlaces = m_keepPlaces;
        request.dryRun = m_dryRun;
        for (const std::string& change : m_changes) {
            const std::size_t equals = change.find('=');
            request.replacements.push_back({change.substr(0, equals), change.substr(equals + 1)});
        }
        return request;
    }

    EExit Replace() const {
        const SReplaceRequest request = Request();
        if (!m_inPlace && !m_dryRun) {
            RemoveLeftovers(FolderOf(ResolveLink(m_output)));
        }
        RefuseOverwriting(request);
        CProgressLine progress(!m_quiet && CanDrawProgress(), FileNameOf(m_image), FileSizeOf(m_image));
        CConsoleOperation operation(progress);
        SEditReport report = m_inPlace ? ReplaceHere(request, operation) : ReplaceInNew(request, operation);
        progress.Clear();
        if (operation.Warning().empty()) {
            Print(report);
            return EExit::Done;
        }
        report.notices.push_back(operation.Warning());
        Print(report);
        PrintError(Name(), m_image, operation.Warning());
        return EExit::Failed;
    }

    SEditReport ReplaceInNew(const SReplaceRequest& request, COperation& operation) const {
        const std::unique_ptr<CImageSource> image = OpenInput(m_image);
        SEditReport report = ReplaceInCopy(
            request, *image, [&] { RefuseDamaged(*image, m_image); }, operation);
        WarnOfOtherParts(*image, m_image, operation);
        return report;
    }

    SEditReport ReplaceHere(const SReplaceRequest& request, COperation& operation) const {
        const EForm form = FormOfFile(m_image);
        if (form != EForm::Iso) {
            throw CRefused(
                Format("%s: only an ISO image can be changed in place, and this is %s; --output writes a new "
                       "image",
                       m_image.c_str(), NameOf(form)));
        }
        return ReplaceInPlace(request, operation);
    }

    void RefuseOverwriting(const SReplaceRequest& request) const {
        if (m_inPlace || m_dryRun || FileKindOf(m_output) == EFileKind::Missing) {
            return;
        }
        const SCommandInput input = InputOf(m_image);
        if (!input.problem.empty()) {
            throw CRefused(input.problem);
        }
        for (const std::string& file : input.files) {
            if (IsSameFile(file, m_output)) {
                throw CRefused(m_image + ": the output would be " +
                               (file == m_image ? "the input itself; --in-place changes it" : "a file of the input"));
            }
        }
        for (const SReplacement& replacement : request.replacements) {
            if (IsSameFile(replacement.source, m_output)) {
                throw CRefused(m_output + ": the output would replace this input");
            }
        }
        if (FileKindOf(m_output) != EFileKind::File) {
            throw CRefused(m_output + " exists and is not a file");
        }
        if (!m_force) {
            throw CRefused(m_output + " exists already; -f replaces it");
        }
    }

    void Print(const SEditReport& report) const {
        const std::string& output = m_inPlace ? m_image : m_output;
        if (m_json) {
            PrintResults(EditJson(m_image, m_dryRun ? "" : output, report));
            return;
        }
        if (m_quiet) {
            return;
        }
        for (const SFileEdit& edit : report.edits) {
            PrintResults(Shown(LineOf(edit), EStream::Output) + '\n');
        }
        const std::string result = m_dryRun    ? m_image + ": " + SummaryOf(report) + "; nothing was written"
                                   : m_inPlace ? m_image + ": " + SummaryOf(report)
                                               : m_image + " -> " + m_output + ": " + SummaryOf(report);
        PrintResults(Shown(result, EStream::Output) + '\n');
    }

    std::string m_image;
    std::vector<std::string> m_changes;
    std::string m_output;
    bool m_inPlace = false;
    bool m_force = false;
    bool m_sync = false;
    bool m_keepPlaces = false;
    bool m_dryRun = false;
    bool m_json = false;
    bool m_quiet = false;
};

}  // namespace

void AddReplaceCommand(Commands& commands) {
    commands.push_back(std::make_unique<CReplaceCommand>());
}

}  // namespace vantrel
