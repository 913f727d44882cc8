#include "iso/edit/edit_report.h"

#include <iterator>

#include "operation/text.h"

namespace vantrel {

namespace {

std::int64_t CountNames(const std::vector<SFileEdit>& edits, bool moved) {
    std::int64_t count = 0;
    for (const SFileEdit& edit : edits) {
        count += edit.IsMoved() == moved ? std::ssize(edit.names) : 0;
    }
    return count;
}

}  // namespace

std::int64_t SEditReport::InPlace() const {
    return CountNames(edits, false);
}

std::int64_t SEditReport::Moved() const {
    return CountNames(edits, true);
}

SEditReport ReportOn(const SEditPlan& plan) {
    return {plan.edits, plan.unchanged, true, SectorsFor(plan.newLength), plan.SectorsAdded(), {}};
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
    return Format("%lld %s %s, %lld changed in place, %lld moved, %lld %s added",
                  static_cast<long long>(report.unchanged), report.unchanged == 1 ? "file" : "files",
                  report.comparesContent ? "unchanged" : "of unchanged length",
                  static_cast<long long>(report.InPlace()), static_cast<long long>(report.Moved()),
                  static_cast<long long>(report.sectorsAdded), report.sectorsAdded == 1 ? "sector" : "sectors");
}

}  // namespace vantrel
