// Several outputs that are of use only together, like a raw image and its sheet: all of them appear, or none.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "files/output_file.h"

namespace vantrel {

/// Outputs that have their names and lose them again at the end of its life, older files coming back, unless Keep was
/// called.
class CUndoableCommits {
public:
    CUndoableCommits() = default;
    CUndoableCommits(const CUndoableCommits&) = delete;
    CUndoableCommits& operator=(const CUndoableCommits&) = delete;
    ~CUndoableCommits() { Undo(); }

    /// Commits an output. False, with `problem` saying why, when that fails; then nothing is left of this output.
    /// In place what was written stays, now and later.
    bool Commit(COutputFile& output, std::string& problem);
    /// Takes all names back, the last one first.
    void Undo();
    /// From here on everything stays.
    void Keep();

private:
    /// A target that got its new content, and where its older content is kept meanwhile (empty: there was none).
    struct SCommitted {
        std::string target;
        std::string older;
    };

    static void Undo(const SCommitted& committed);

    std::vector<SCommitted> m_committed;
};

/// Commits the outputs in their order. When one cannot be, those before it are undone, older files included, the rest
/// is abandoned, and false is returned with `problem` saying which output failed and why. In place what was
/// written stays, and false says only that something was lost.
bool CommitTogether(std::span<COutputFile* const> outputs, std::string& problem);

}  // namespace vantrel
