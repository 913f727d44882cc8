// Chooses the rebuild for a layout, and names the files of the window's rebuild.
#include "files/checked_file.h"
#include "files/path.h"
#include "iml/layout/layout_check.h"
#include "iml/layout/layout_reader.h"
#include "iml/rebuild/disc_rebuild.h"
#include "iml/rebuild/rebuild.h"

namespace vantrel {

namespace {

char ReadMediaLetter(const SRebuildRequest& request, COperation& operation) {
    CCheckedInput layout(operation);
    layout.OpenOrFail(request.layoutPath, "Code 2011 - Error Opening %s");
    if (request.strict) {
        const std::string problem = LayoutProblem(layout);
        layout.FailIfUnread();
        if (!problem.empty()) {
            operation.Fail(request.layoutPath + ", " + problem);
        }
    }
    return MediaLetterOf(layout);
}

bool CanBeOpened(const std::string& path) {
    return CInputFile().Open(path);
}

/// The base name's ".ims" file. If it cannot be opened, the one that the layout names, which the export of a layout
/// with a long name or several dots has written.
std::string WindowLeadingPath(const std::string& folder, const std::string& base, const std::string& layoutPath) {
    const std::string byBase = ResolveFileCase(base + ".ims");
    CInputFile layout;
    const std::string name = !CanBeOpened(byBase) && layout.Open(layoutPath) ? LeadingNameIn(layout) : std::string();
    const std::string named = name.empty() ? byBase : ResolveFileCase(folder + name);
    return CanBeOpened(named) ? named : byBase;
}

}  // namespace

SRebuildRequest WindowRebuild(const std::string& folder, const std::string& fileName) {
    const std::string base = folder + BaseNameOf(fileName);
    SRebuildRequest request;
    request.layoutPath = ResolveFileCase(folder + fileName);
    request.leadingPath = WindowLeadingPath(folder, base, request.layoutPath);
    request.outputPath = base + ".iso";
    request.sideFiles = {base + ".txt", base + ".vlt"};
    return request;
}

SEditReport RebuildImage(const SRebuildRequest& request, COperation& operation) {
    operation.Begin(EConversion::ImlToIso);
    const char letter = ReadMediaLetter(request, operation);
    if (!IsCdLetter(letter) && !IsDvdLetter(letter)) {
        operation.Fail("Error!!!!!!!! This is not UMD or CD or DVD verson of iml file");
    }
    if (request.rule != ERebuildRule::LikeWindow) {
        return RebuildDisc(request, IsDvdLetter(letter) ? kDvdShape : kCdShape, operation);
    }
    if (IsCdLetter(letter)) {
        RebuildCdImage(request, operation);
    } else {
        RebuildDvdImage(request, operation);
    }
    return {};
}

}  // namespace vantrel
