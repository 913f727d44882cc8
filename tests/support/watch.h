// What stands behind the watched calls of every system: which folder is watched, which call fails, what was called.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/watched_calls.h"

namespace vantrel::test {

/// What the system knows an open file or folder by.
using Handle = std::intptr_t;

/// What is being watched, and what is to fail. Calls come from any thread.
class CWatch {
public:
    CWatch(std::string_view folder, const SFault& fault, const SSystem& system)
        : m_folder(folder), m_fault(fault), m_system(system) {}

    const SSystem& System() const { return m_system; }

    /// The part of a path below the folder; nothing for paths that lie elsewhere.
    std::optional<std::string> Below(std::string_view path) const;

    /// Takes note of a call; whether it is the one to fail.
    bool Note(const SCall& call);

    /// Takes note of a file that was opened by `path`, unless it lies elsewhere.
    void Keep(Handle handle, std::string_view path, bool written);
    /// The call of a kind that concerns an open file; nothing for files that are not watched.
    std::optional<SCall> CallOn(Handle handle, ECall kind);
    void Drop(Handle handle);

    std::vector<SCall> Calls() const;
    bool HasFailed() const;
    std::size_t OpenCount() const;
    /// Whether it is the turn of an interruption; every other transfer is one.
    bool TakesInterruption();

private:
    std::string m_folder;
    SFault m_fault;
    SSystem m_system;
    mutable std::mutex m_mutex;
    std::vector<SCall> m_calls;
    std::map<Handle, SCall> m_open;
    std::size_t m_met = 0;
    bool m_hasFailed = false;
    bool m_isInterrupted = false;
};

/// The one watch there is, because calls of the system have no place for another argument.
extern std::optional<CWatch> g_watch;

/// Takes note of the call about a path, or about an open file; whether it is the one to fail.
bool IsToFailAt(std::string_view path, ECall kind, bool written = false);
bool IsToFailOn(Handle handle, ECall kind);

}  // namespace vantrel::test
