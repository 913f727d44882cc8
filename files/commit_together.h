// Outputs that are useful only together, like a raw image and its CUE sheet: all of them appear, or none.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "files/output_file.h"
#include "files/staging.h"

namespace vantrel {

/// Outputs that get their names together. Undone, with replaced files restored, unless Keep is called before the end of
/// the object's life. Each call that returns false leaves its cause in Problem().
class CJointCommit {
public:
    /// Lets outputs wait in a folder within `base`, which ends in a separator or is empty. Outputs that are not below
    /// it wait in folders of their own.
    bool Open(const std::string& base);
    /// Makes the folders in which an output for `target` waits and returns its place; empty on failure.
    std::string PlaceFor(const std::string& target);
    /// Finishes an output. Outputs in place are complete with that.
    bool Add(COutputFile& output);
    /// Gives all outputs their names, or none.
    bool Commit();
    /// Makes the commit permanent.
    void Keep();

    const std::string& Problem() const { return m_problem; }

private:
    CStaging* StagingOf(const std::string& target);
    bool Note(const CStaging& staging, bool succeeded);

    std::vector<std::unique_ptr<CStaging>> m_stagings;
    bool m_replaces = false;
    std::string m_problem;
};

/// Commits the outputs. If one fails, undoes those before it, restores older files, abandons the rest, names the output
/// and the cause in `problem` and returns false. Outputs written in place stay in any case.
bool CommitTogether(std::span<COutputFile* const> outputs, std::string& problem);

}  // namespace vantrel
