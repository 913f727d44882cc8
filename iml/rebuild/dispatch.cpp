// The "vantrel" command: which rebuild a layout needs, and the names of the files that belong to it.
#include "files/input_file.h"
#include "files/path.h"
#include "iml/layout/layout_reader.h"
#include "iml/rebuild/rebuild.h"
#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

namespace {

char ReadMediaLetter(const std::string& layoutPath, COperation& operation) {
    CInputFile layout;
    if (!layout.Open(layoutPath)) {
        operation.Fail(Format("Code 2011 - Error Opening %s", layoutPath.c_str()));
    }
    return MediaLetterOf(layout);
}

}  // namespace

SRebuildRequest WindowRebuild(const std::string& folder, const std::string& fileName) {
    const std::string base = folder + BaseNameOf(fileName);
    SRebuildRequest request;
    request.layoutPath = ResolveFileCase(folder + fileName);
    request.entryListPath = base + ".txt";
    request.boundsPath = base + ".vlt";
    request.leadingPath = ResolveFileCase(base + ".ims");
    request.outputPath = base + ".iso";
    return request;
}

void Vantrel(const SRebuildRequest& request, COperation& operation) {
    DisableFrameCommands(operation);
    const char letter = ReadMediaLetter(request.layoutPath, operation);
    if (IsCdLetter(letter)) {
        RebuildCdImage(request, operation);
    } else if (IsDvdLetter(letter)) {
        RebuildDvdImage(request, operation);
    } else {
        operation.Fail("Error!!!!!!!! This is not UMD or CD or DVD verson of iml file");
    }
    DisableCommands(operation, {ECommand::IsoToIml, ECommand::Vantrel, ECommand::IsoToBin, ECommand::BinToIso});
    operation.EnableCommand(ECommand::Browse, true);
}

}  // namespace vantrel
