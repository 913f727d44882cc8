#include "image/inspect/layout_report.h"

#include "files/path.h"
#include "image/form.h"
#include "iml/layout/layout_summary.h"
#include "operation/text.h"

namespace vantrel {

namespace {

SLayoutSummary SummaryOf(const std::string& path, const std::string& filesFolder) {
    const std::string folder = filesFolder.empty() ? FolderOf(path) : WithSeparator(filesFolder);
    return SummarizeLayout(path, folder.empty() ? WithSeparator(".") : folder);
}

}  // namespace

CReport ReportOnLayout(const std::string& path, const std::string& filesFolder) {
    const SLayoutSummary summary = SummaryOf(path, filesFolder);
    std::vector<std::string> missing;
    for (const SLayoutFile& listed : summary.files) {
        if (!listed.found) {
            missing.push_back(listed.path);
        }
    }
    return {{"media", summary.media},
            {"entries", summary.entries},
            {"listed_files", summary.files.size()},
            {"missing", missing},
            {"leading_structures", summary.leadingPath},
            {"leading_structures_present", summary.leadingFound}};
}

CReport VerifyLayout(const std::string& path, const std::string& filesFolder) {
    const SLayoutSummary summary = SummaryOf(path, filesFolder);
    std::vector<std::string> problems;
    if (!summary.problem.empty()) {
        problems.push_back(summary.problem);
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
    return {{"file", path}, {"form", NameOf(EForm::Iml)}, {"ok", problems.empty()}, {"problems", problems}};
}

}  // namespace vantrel
