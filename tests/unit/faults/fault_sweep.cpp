#include "tests/unit/faults/fault_sweep.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "tests/support/undated.h"

namespace vantrel::test {

namespace {

namespace fs = std::filesystem;

/// Does not touch files that are as they were.
void Restore(const CTestFolder& folder, const FolderState& state) {
    const FolderState current = StateOf(folder);
    for (const auto& [path, content] : current) {
        if (!state.contains(path)) {
            fs::remove_all(folder / path);
        }
    }
    for (const auto& [path, content] : state) {
        const auto found = current.find(path);
        if (path.ends_with('/')) {
            fs::create_directory(folder / path);
        } else if (found == current.end() || found->second != content) {
            WriteText(folder / path, content);
        }
    }
}

/// Calls `run` with a fault. Returns the system calls that it makes.
std::vector<SCall> Watched(const CTestFolder& folder, const SFault& fault, const SSystem& system,
                           const std::function<void()>& run) {
    const CWatchedCalls watch(folder.Path(), fault, system);
    run();
    EXPECT_EQ(watch.OpenCount(), 0U) << "a file is still open";
    EXPECT_EQ(watch.HasFailed(), fault.number != 0) << "the call was not made";
    return watch.Calls();
}

}  // namespace

FolderState StateOf(const CTestFolder& folder) {
    FolderState state;
    for (const auto& entry : fs::recursive_directory_iterator(folder.Path())) {
        const std::string path = fs::relative(entry.path(), folder.Path()).string();
        if (entry.is_directory()) {
            state[path + '/'];
        } else if (auto content = ReadOpenFile(entry.path().string())) {
            state[path] = Undated(path, *std::move(content));
        }
    }
    return state;
}

std::size_t SweepFaults(const CTestFolder& folder, const SSystem& system, const std::function<void()>& run,
                        const std::function<void(const SFault& fault)>& check) {
    const FolderState before = StateOf(folder);
    std::map<SCall, std::size_t> counts;
    for (const SCall& call : Watched(folder, {}, system, run)) {
        ++counts[call];
    }
    check({});
    std::size_t faults = 0;
    for (const auto& [call, count] : counts) {
        for (std::size_t number = 1; number <= count; ++number, ++faults) {
            SCOPED_TRACE(TextOf(call) + ", time " + std::to_string(number) + " of " + std::to_string(count));
            Restore(folder, before);
            const SFault fault = {call, number};
            Watched(folder, fault, system, run);
            check(fault);
        }
    }
    return faults;
}

}  // namespace vantrel::test
