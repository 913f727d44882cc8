#include "files/commit_together.h"

#include <algorithm>
#include <utility>

#include "files/temporary_path.h"

namespace vantrel {

namespace {

/// Keeps the content of `path` under another name, as a hard link if possible. Returns that name; empty on failure.
std::string KeepOlder(const std::string& path) {
    const std::string older = TemporaryPathBeside(path);
    return LinkFile(path, older) || RenameFile(path, older, false) ? older : std::string();
}

/// Writes all pending data, so that only renaming remains.
bool FinishAll(std::span<COutputFile* const> outputs, std::string& problem) {
    return std::all_of(outputs.begin(), outputs.end(), [&problem](COutputFile* output) {
        const bool finished = output->Finish();
        problem = output->Problem();
        return finished;
    });
}

}  // namespace

void CUndoableCommits::Undo(const SCommitted& committed) {
    if (committed.older.empty()) {
        RemoveTemporary(committed.target);
    } else if (RenameFile(committed.older, committed.target, true)) {
        RemoveFile(committed.older);  // renaming a hard link to its other name does nothing
    }
}

bool CUndoableCommits::Commit(COutputFile& output, std::string& problem) {
    SCommitted step = {output.TargetPath(), ""};
    if (output.Manner() == EOutputManner::CommitReplace && FileKindOf(step.target) == EFileKind::File) {
        step.older = KeepOlder(step.target);
        if (step.older.empty()) {
            problem = "Cannot replace " + step.target + ": " + LastFileError();
            return false;
        }
    }
    if (!output.Commit()) {
        problem = output.Problem();
        if (!step.older.empty()) {
            Undo(step);
        }
        return false;
    }
    if (output.Manner() != EOutputManner::InPlace) {
        m_committed.push_back(std::move(step));
    }
    return true;
}

void CUndoableCommits::Undo() {
    for (; !m_committed.empty(); m_committed.pop_back()) {
        Undo(m_committed.back());
    }
}

void CUndoableCommits::Keep() {
    for (const SCommitted& kept : m_committed) {
        if (!kept.older.empty()) {
            RemoveTemporary(kept.older);
        }
    }
    m_committed.clear();
}

bool CommitTogether(std::span<COutputFile* const> outputs, std::string& problem) {
    CUndoableCommits commits;
    const bool committed = FinishAll(outputs, problem) &&
                           std::all_of(outputs.begin(), outputs.end(),
                                       [&](COutputFile* output) { return commits.Commit(*output, problem); });
    if (committed) {
        commits.Keep();
        return true;
    }
    commits.Undo();
    for (COutputFile* output : outputs) {
        output->Abandon();
    }
    return false;
}

}  // namespace vantrel
