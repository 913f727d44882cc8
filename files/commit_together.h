// Outputs that are useful only together, like a raw image and its CUE sheet: all of them appear, or none.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "files/output_file.h"

namespace vantrel {

/// Commits that are undone, with older files restored, unless Keep is called before the end of the object's life.
class CUndoableCommits {
public:
    CUndoableCommits() = default;
    CUndoableCommits(const CUndoableCommits&) = delete;
    CUndoableCommits& operator=(const CUndoableCommits&) = delete;
    ~CUndoableCommits() { Undo(); }

    /// Commits an output. If that fails, removes the output, sets `problem` and returns false. An output written in
    /// place always stays.
    bool Commit(COutputFile& output, std::string& problem);
    /// Undoes all commits, the last one first.
    void Undo();
    /// Makes all commits permanent.
    void Keep();

private:
    /// A committed target, and the temporary path of its older content (empty if there was none).
    struct SCommitted {
        std::string target;
        std::string older;
    };

    static void Undo(const SCommitted& committed);

    std::vector<SCommitted> m_committed;
};

/// Commits the outputs in order. If one fails, undoes those before it, restores older files, abandons the rest, names
/// the output and the cause in `problem` and returns false. Outputs written in place stay in any case.
bool CommitTogether(std::span<COutputFile* const> outputs, std::string& problem);

}  // namespace vantrel
