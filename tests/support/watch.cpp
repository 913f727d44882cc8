#include "tests/support/watch.h"

#include <algorithm>
#include <array>

namespace vantrel::test {

std::optional<CWatch> g_watch;

namespace {

/// Calls that beforeCall makes are not watched. On Windows, the C library makes them through the same wrappers.
thread_local bool t_isInBeforeCall = false;

constexpr std::array<const char*, 19> kNames = {
    "open",   "close", "read",   "read the end of", "write", "copy into", "seek", "size",  "resize", "look at",
    "rename", "link",  "remove", "make folder",     "list",  "duplicate", "lock", "flush", "mark"};

/// "a\.vantrel-01234567.tmp\b" becomes "a/.vantrel-*.tmp/b".
std::string Simplified(std::string path) {
    static constexpr std::string_view kBeginning = ".vantrel-";
    static constexpr std::size_t kDigits = 8;
    std::replace(path.begin(), path.end(), '\\', '/');
    for (std::size_t start = path.find(kBeginning); start != std::string::npos;
         start = path.find(kBeginning, start + kBeginning.size())) {
        path.replace(start + kBeginning.size(), kDigits, "*");
    }
    return path;
}

}  // namespace

std::optional<std::string> CWatch::Below(std::string_view path) const {
    if (t_isInBeforeCall || !path.starts_with(std::string_view(m_folder).substr(0, m_folder.size() - 1))) {
        return std::nullopt;
    }
    return Simplified(std::string(path.substr(std::min(path.size(), m_folder.size()))));
}

bool CWatch::Note(const SCall& call) {
    t_isInBeforeCall = true;
    m_system.beforeCall(call);
    t_isInBeforeCall = false;
    const std::lock_guard lock(m_mutex);
    m_calls.push_back(call);
    if (call != m_fault.call || m_fault.number == 0 || ++m_met != m_fault.number) {
        return false;
    }
    m_hasFailed = true;
    return true;
}

void CWatch::Keep(Handle handle, std::string_view path, bool written) {
    if (const std::optional<std::string> file = Below(path)) {
        const std::lock_guard lock(m_mutex);
        m_open[handle] = {ECall::Open, *file, written};
    }
}

void CWatch::KeepSecond(Handle handle, const std::string& file) {
    const std::lock_guard lock(m_mutex);
    m_open[handle] = {ECall::Open, file, false};
}

std::optional<SCall> CWatch::CallOn(Handle handle, ECall kind) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_open.find(handle);
    if (found == m_open.end()) {
        return std::nullopt;
    }
    return SCall{kind, found->second.file, found->second.written};
}

void CWatch::Drop(Handle handle) {
    const std::lock_guard lock(m_mutex);
    m_open.erase(handle);
}

std::vector<SCall> CWatch::Calls() const {
    const std::lock_guard lock(m_mutex);
    return m_calls;
}

bool CWatch::HasFailed() const {
    const std::lock_guard lock(m_mutex);
    return m_hasFailed;
}

std::size_t CWatch::OpenCount() const {
    const std::lock_guard lock(m_mutex);
    return m_open.size();
}

bool CWatch::TakesInterruption() {
    const std::lock_guard lock(m_mutex);
    m_isInterrupted = !m_isInterrupted;
    return m_isInterrupted;
}

bool IsToFailAt(std::string_view path, ECall kind, bool written) {
    const std::optional<std::string> file = g_watch ? g_watch->Below(path) : std::nullopt;
    return file && g_watch->Note({kind, *file, written});
}

bool IsToFailOn(Handle handle, ECall kind) {
    const std::optional<SCall> call = g_watch ? g_watch->CallOn(handle, kind) : std::nullopt;
    return call && g_watch->Note(*call);
}

std::string TextOf(const SCall& call) {
    return std::string(kNames.at(static_cast<std::size_t>(call.kind))) + " " + call.file +
           (call.written ? " (written)" : "");
}

CWatchedCalls::CWatchedCalls(std::string_view folder, const SFault& fault, const SSystem& system) {
    g_watch.emplace(folder, fault, system);
}

CWatchedCalls::~CWatchedCalls() {
    g_watch.reset();
}

std::vector<SCall> CWatchedCalls::Calls() const {
    return g_watch->Calls();
}

bool CWatchedCalls::HasFailed() const {
    return g_watch->HasFailed();
}

std::size_t CWatchedCalls::OpenCount() const {
    return g_watch->OpenCount();
}

}  // namespace vantrel::test
