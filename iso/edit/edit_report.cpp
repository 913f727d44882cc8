#include "iso/edit/edit_report.h"

#include <algorithm>

#include "operation/text.h"

namespace vantrel {

std::int64_t SEditReport::InPlace() const {
    return static_cast<std::int64_t>(edits.size()) - Moved();
}

std::int64_t SEditReport::Moved() const {
    return std::count_if(edits.begin(), edits.end(), [](const SFileEdit& edit) { return edit.IsMoved(); });
}

SEditReport ReportOn(const SEditPlan& plan) {
    return {plan.edits, plan.unchanged, SectorsFor(plan.newLength), plan.SectorsAdded(), {}};
}

std::string LineOf(const SFileEdit& edit) {
    std::string names;
    for (const std::string& name : edit.names) {
        names += (names.empty() ? "" : ", ") + name;
    }
    const std::string place = edit.IsMoved() ? Format("moved from sector %u to %u", edit.from, edit.to)
                                             : Format("changed in place at sector %u", edit.to);
    return Format("%s: %s (%lld bytes, now %lld)", names.c_str(), place.c_str(), static_cast<long long>(edit.oldSize),
                  static_cast<long long>(edit.newSize));
}

std::string SummaryOf(const SEditReport& report) {
    return Format("%lld files unchanged, %lld changed in place, %lld moved, %lld sectors added",
                  static_cast<long long>(report.unchanged), static_cast<long long>(report.InPlace()),
                  static_cast<long long>(report.Moved()), static_cast<long long>(report.sectorsAdded));
}

}  // namespace vantrel
