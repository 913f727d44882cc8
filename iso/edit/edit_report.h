// What an edit changed, for people and for programs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "iso/edit/edit_plan.h"

namespace vantrel {

struct SEditReport {
    std::vector<SFileEdit> edits;
    std::int64_t unchanged = 0;  ///< files
    /// Whether unchanged files have the content of the export; otherwise only their lengths are known to be the same.
    bool comparesContent = true;
    std::int64_t sectors = 0;  ///< of the new image
    std::int64_t sectorsAdded = 0;
    std::vector<std::string> notices;

    // Every name of a file counts.
    std::int64_t InPlace() const;
    std::int64_t Moved() const;
};

SEditReport ReportOn(const SEditPlan& plan);

/// One line for a changed file, like "DATA/A.BIN: moved from sector 30 to 1200 (70001 bytes, now 90000)".
std::string LineOf(const SFileEdit& edit);

/// "12 files unchanged, 1 changed in place, 1 moved, 44 sectors added"
std::string SummaryOf(const SEditReport& report);

}  // namespace vantrel
