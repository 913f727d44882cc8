// The commands that check and append the postgap of an image, in place.
#include "console/commands.h"
#include "console/conversion_command.h"
#include "console/option_set.h"
#include "iso/postgap.h"

namespace vantrel {

namespace {

constexpr int kMaxAddedSectors = 9;

class CCheckPostgapCommand : public CConversionCommand {
public:
    CCheckPostgapCommand()
        : CConversionCommand(
              {"check-postgap",
               "Check whether a PlayStation 2 CD image has its postgap, and append it if it is missing",
               "Examples:\n  vantrel check-postgap game.iso\n  vantrel check-postgap --dry-run game.iso\n\n"
               "The image is changed in place; an incomplete change is undone."}) {}

    void Declare(COptionSet& options) override {
        DeclareFiles(options);
        options.AddFlag("--dry-run", m_dryRun, "Change nothing; status 1 if the postgap is missing");
    }

    void Convert(const SConversionJob& job, COperation& operation) const override {
        const EUpdateManner manner = m_dryRun ? EUpdateManner::ReadOnly : EUpdateManner::UndoUnlessCommitted;
        CheckPostgap({job.input, manner, true}, operation);
    }

private:
    bool m_dryRun = false;
};

class CAddPostgapCommand : public CConversionCommand {
public:
    CAddPostgapCommand()
        : CConversionCommand(
              {"add-postgap",
               "Append zero sectors to a UMD image; set the volume size of a UMD or CD image to its length",
               "Examples:\n  vantrel add-postgap --count 2 game.iso\n\n"
               "The image is changed in place; an incomplete change is undone. A CD image is not "
               "lengthened; only its volume size is corrected."}) {}

    void Declare(COptionSet& options) override {
        DeclareFiles(options);
        options.AddNumber("--count", m_sectors, 1, kMaxAddedSectors, "Number of sectors, 1 to 9");
        options.Require("--count");
    }

    void Convert(const SConversionJob& job, COperation& operation) const override {
        AddSelectivePostgap({job.input, EUpdateManner::UndoUnlessCommitted, true, m_sectors}, operation);
    }

private:
    int m_sectors = 0;
};

}  // namespace

void AddPostgapCommands(Commands& commands) {
    commands.push_back(std::make_unique<CCheckPostgapCommand>());
    commands.push_back(std::make_unique<CAddPostgapCommand>());
}

}  // namespace vantrel
