// Chooses the rebuild for a layout, and names the files of the window's rebuild.
#include "files/checked_file.h"
#include "files/path.h"
#include "iml/layout/layout_reader.h"
#include "iml/rebuild/rebuild.h"

namespace vantrel {

namespace {

char ReadMediaLetter(const std::string& layoutPath, COperation& operation) {
    CCheckedInput layout(operation);
    layout.OpenOrFail(layoutPath, "Code 2011 - Error Opening %s");
    return MediaLetterOf(layout);
}

}  // namespace

SRebuildRequest WindowRebuild(const std::string& folder, const std::string& fileName) {
    const std::string base = folder + BaseNameOf(fileName);
    SRebuildRequest request;
    request.layoutPath = ResolveFileCase(folder + fileName);
    request.leadingPath = ResolveFileCase(base + ".ims");
    request.outputPath = base + ".iso";
    request.sideFiles = {base + ".txt", base + ".vlt"};
    return request;
}

void RebuildImage(const SRebuildRequest& request, COperation& operation) {
    operation.Begin(EConversion::ImlToIso);
    const char letter = ReadMediaLetter(request.layoutPath, operation);
    if (IsCdLetter(letter)) {
        RebuildCdImage(request, operation);
    } else if (IsDvdLetter(letter)) {
        RebuildDvdImage(request, operation);
    } else {
        operation.Fail("Error!!!!!!!! This is not UMD or CD or DVD verson of iml file");
    }
}

}  // namespace vantrel
