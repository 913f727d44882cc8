#include "files/commit_together.h"

#include <algorithm>

#include "files/path.h"

namespace vantrel {

namespace {

/// Writes all data, so that only naming the outputs remains.
bool FinishAll(std::span<COutputFile* const> outputs, std::string& problem) {
    return std::all_of(outputs.begin(), outputs.end(), [&problem](COutputFile* output) {
        const bool finished = output->Finish();
        problem = output->Problem();
        return finished;
    });
}

}  // namespace

bool CJointCommit::Note(const CStaging& staging, bool succeeded) {
    if (!succeeded) {
        m_problem = staging.Problem();
    }
    return succeeded;
}

bool CJointCommit::Open(const std::string& base) {
    m_stagings.push_back(std::make_unique<CStaging>());
    CStaging& staging = *m_stagings.back();
    return Note(staging, staging.Open(base));
}

CStaging* CJointCommit::StagingOf(const std::string& target) {
    const auto found = std::find_if(m_stagings.begin(), m_stagings.end(),
                                    [&target](const auto& staging) { return staging->Covers(target); });
    if (found != m_stagings.end()) {
        return found->get();
    }
    return Open(FolderOf(target)) ? m_stagings.back().get() : nullptr;
}

std::string CJointCommit::PlaceFor(const std::string& target) {
    CStaging* const staging = StagingOf(target);
    return staging != nullptr && Note(*staging, staging->MakeFolders(target)) ? staging->PlaceOf(target) : "";
}

bool CJointCommit::Add(COutputFile& output) {
    if (output.Manner() == EOutputManner::InPlace) {
        m_problem = output.Commit() ? "" : output.Problem();
        return m_problem.empty();
    }
    m_replaces = m_replaces || Replaces(output.Manner());
    CStaging* const staging = StagingOf(output.TargetPath());
    return staging != nullptr && Note(*staging, staging->MakeFolders(output.TargetPath()) && staging->Add(output));
}

bool CJointCommit::Commit() {
    const bool committed = std::all_of(m_stagings.begin(), m_stagings.end(), [this](const auto& staging) {
        return Note(*staging, staging->Commit(m_replaces));
    });
    if (committed) {
        return true;
    }
    for (const auto& staging : m_stagings) {
        staging->Undo();
        m_problem += staging->Kept();
    }
    return false;
}

void CJointCommit::Keep() {
    for (const auto& staging : m_stagings) {
        staging->Keep();
    }
    m_stagings.clear();
}

bool CommitTogether(std::span<COutputFile* const> outputs, std::string& problem) {
    if (FinishAll(outputs, problem)) {
        CJointCommit commit;
        const bool added =
            std::all_of(outputs.begin(), outputs.end(), [&commit](COutputFile* output) { return commit.Add(*output); });
        if (added && commit.Commit()) {
            commit.Keep();
            return true;
        }
        problem = commit.Problem();
    }
    for (COutputFile* output : outputs) {
        output->Abandon();
    }
    return false;
}

}  // namespace vantrel
