#include "image/inspect/layout_report.h"

#include "console/open_image.h"
#include "console/refused.h"
#include "files/path.h"
#include "image/form.h"
#include "iml/layout/layout_summary.h"
#include "operation/text.h"

namespace vantrel {

namespace {

SLayoutSummary SummaryOf(const std::string& path) {
    const std::string folder = FolderOf(path);
    std::string problem;
    const std::optional<SLayoutSummary> summary =
        SummarizeLayout(path, folder.empty() ? WithSeparator(".") : folder, problem);
    if (!summary) {
        throw CRefused(path + ": " + problem);
    }
    return *summary;
}

}  // namespace

Report ReportOnLayout(const std::string& path) {
    const SLayoutSummary summary = SummaryOf(path);
    Report layout;
    layout["media"] = summary.media;
    layout["entries"] = summary.entries;
    layout["listed_files"] = summary.files.size();
    layout["missing"] = Report::array();
    for (const SLayoutFile& listed : summary.files) {
        if (!listed.found) {
            layout["missing"].push_back(listed.path);
        }
    }
    layout["leading_structures"] = summary.leadingPath;
    layout["leading_structures_present"] = summary.leadingFound;
    return {{"file", path},
            {"form", NameOf(EForm::Iml)},
            {"file_bytes", SizeOrRefuse(path)},
            {"layout", std::move(layout)}};
}

Report VerifyLayout(const std::string& path) {
    const SLayoutSummary summary = SummaryOf(path);
    Report problems = Report::array();
    if (!summary.complete) {
        problems.push_back(Format("the layout counts %d entries and has fewer", summary.entries));
    }
    if (!summary.leadingFound) {
        problems.push_back(summary.leadingPath + " with the leading structures is missing");
    }
    for (const SLayoutFile& file : summary.files) {
        if (!file.found) {
            problems.push_back(file.path + " is missing");
        } else if (!file.Fits()) {
            problems.push_back(Format("%s has %lld bytes and does not fit sectors %d to %d", file.path.c_str(),
                                      static_cast<long long>(file.size), file.first, file.last));
        }
    }
    const bool ok = problems.empty();
    return {{"file", path}, {"form", NameOf(EForm::Iml)}, {"ok", ok}, {"problems", std::move(problems)}};
}

}  // namespace vantrel
