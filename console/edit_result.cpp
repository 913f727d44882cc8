#include "console/edit_result.h"

#include "console/report_text.h"

namespace vantrel {

std::string EditJson(const std::string& input, const std::string& output, const SEditReport& report) {
    CReport::List files;
    for (const SFileEdit& edit : report.edits) {
        files.push_back({{"paths", edit.names},
                         {"action", edit.IsMoved() ? "moved" : "in place"},
                         {"from_sector", edit.from},
                         {"to_sector", edit.to},
                         {"bytes_before", edit.oldSize},
                         {"bytes", edit.newSize}});
    }
    return JsonText({{"file", input},
                     {"output", output.empty() ? CReport(nullptr) : CReport(output)},
                     {"unchanged", report.unchanged},
                     {"compared", report.comparesContent},
                     {"changed_in_place", report.InPlace()},
                     {"moved", report.Moved()},
                     {"sectors", report.sectors},
                     {"sectors_added", report.sectorsAdded},
                     {"files", std::move(files)},
                     {"notices", report.notices}});
}

std::string FailureJson(const std::string& input, const std::string& text) {
    return JsonText({{"file", input}, {"error", text}});
}

}  // namespace vantrel
