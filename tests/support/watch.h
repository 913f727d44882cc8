// The state of watched calls on every system: the folder, the call that fails, and the calls so far.
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

/// The system's handle of an open file or folder.
using Handle = std::intptr_t;

/// The calls about one folder and the one that fails. Thread-safe.
class CWatch {
public:
    CWatch(std::string_view folder, const SFault& fault, const SSystem& system)
        : m_folder(folder), m_fault(fault), m_system(system) {}

    const SSystem& System() const { return m_system; }

    /// The part of a path below the folder; no value for other paths.
    std::optional<std::string> Below(std::string_view path) const;

    /// Records a call. Returns whether it must fail.
    bool Note(const SCall& call);

    /// Records that a file was opened, if it is below the folder.
    void Keep(Handle handle, std::string_view path, bool written);
    /// Records a second handle of a file below the folder, for reading.
    void KeepSecond(Handle handle, const std::string& file);
    /// The description of a call on an open file; no value for files that are not watched.
    std::optional<SCall> CallOn(Handle handle, ECall kind);
    void Drop(Handle handle);

    std::vector<SCall> Calls() const;
    bool HasFailed() const;
    std::size_t OpenCount() const;
    /// Whether the next transfer is interrupted: alternately true and false.
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

/// The only watch; system calls have no parameter for it.
extern std::optional<CWatch> g_watch;

/// Records a call on a path or an open file. Returns whether it must fail.
bool IsToFailAt(std::string_view path, ECall kind, bool written = false);
bool IsToFailOn(Handle handle, ECall kind);

}  // namespace vantrel::test
