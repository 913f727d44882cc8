#include "files/commit_together.h"

#include <utility>
#include <vector>

#include "files/temporary_path.h"

namespace vantrel {

namespace {

/// A target that got its new content, and where its older content is kept meanwhile (empty: there was none).
struct SCommitted {
    std::string target;
    std::string older;
};

/// Keeps the content of `path` under another name, preferably without taking it away from its own.
std::string KeepOlder(const std::string& path) {
    const std::string older = TemporaryPathBeside(path);
    return LinkFile(path, older) || RenameFile(path, older, false) ? older : std::string();
}

void Undo(const SCommitted& committed) {
    if (committed.older.empty()) {
        RemoveFile(committed.target);
    } else if (IsSameFile(committed.older, committed.target)) {
        RemoveFile(committed.older);
    } else {
        RenameFile(committed.older, committed.target, true);
    }
}

/// Gives one output its name; the reason when that fails, or an empty text.
std::string CommitOne(COutputFile& output, std::vector<SCommitted>& committed) {
    SCommitted step = {output.TargetPath(), ""};
    if (output.Manner() == EOutputManner::CommitReplace && FileKindOf(step.target) == EFileKind::File) {
        step.older = KeepOlder(step.target);
        if (step.older.empty()) {
            return "Cannot replace " + step.target + ": " + LastFileError();
        }
    }
    if (output.Commit()) {
        committed.push_back(std::move(step));
        return "";
    }
    if (!step.older.empty()) {
        Undo(step);
    }
    return output.FailureText();
}

/// Commits all; the reason when one fails, or an empty text.
std::string CommitAll(std::span<COutputFile* const> outputs, std::vector<SCommitted>& committed) {
    for (COutputFile* output : outputs) {
        if (!output->Finish()) {
            return output->FailureText();
        }
    }
    for (COutputFile* output : outputs) {
        std::string reason = CommitOne(*output, committed);
        if (!reason.empty()) {
            return reason;
        }
    }
    return "";
}

}  // namespace

bool CommitTogether(std::span<COutputFile* const> outputs, std::string& failureText) {
    std::vector<SCommitted> committed;
    failureText = CommitAll(outputs, committed);
    if (failureText.empty()) {
        for (const SCommitted& kept : committed) {
            if (!kept.older.empty()) {
                RemoveFile(kept.older);
            }
        }
        return true;
    }
    for (auto last = committed.rbegin(); last != committed.rend(); ++last) {
        Undo(*last);
    }
    for (COutputFile* output : outputs) {
        output->Abandon();
    }
    return false;
}

}  // namespace vantrel
