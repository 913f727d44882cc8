// Records the system calls of the file layer and makes one of them fail. In programs that link vantrel_watched_calls,
// the linker redirects the system calls to wrappers, so the file layer itself is tested unchanged. Calls outside the
// watched folder pass through.
#pragma once

#include <cerrno>
#include <compare>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantrel::test {

enum class ECall {
    Open,
    Close,
    Read,
    ReadEnd,  ///< A read after the last byte, which returns 0 bytes.
    Write,
    Copy,  ///< From another file into this one.
    Seek,
    Size,
    Resize,
    Look,
    Rename,
    Link,
    Remove,
    MakeFolder,
    List,
    Duplicate,  ///< Of a handle, when a temporary file is complete.
    Lock,
    Flush,
    Mark  ///< Windows: as a file that the system removes with its last handle.
};

/// A call and the path of its file below the watched folder, without the random part of temporary names.
struct SCall {
    ECall kind = ECall::Open;
    std::string file;
    bool written = false;  ///< Whether the file was open for writing.

    auto operator<=>(const SCall&) const = default;
};

/// "read game.iso", "close game.cso (written)"
std::string TextOf(const SCall& call);

/// The call that fails: the `number`-th (from 1) of those equal to `call`.
struct SFault {
    SCall call;
    std::size_t number = 0;  ///< 0: no call fails.
};

/// The cause of a failure: NoSpace for calls that need space on the disk, Device for all others.
enum class EFailure { Device, NoSpace };

/// The text of LastFileError for this cause.
std::string SystemText(EFailure failure);

/// The content of a file that may be open elsewhere; no value if it is removed when that is closed.
std::optional<std::string> ReadOpenFile(const std::string& path);

/// What the simulated system supports. Unsupported calls fail with the error codes of real systems.
struct SSystem {
    bool renamesWithoutReplacing = true;  ///< POSIX: renameat2 with RENAME_NOREPLACE
    bool linksFiles = true;
    bool vanishingFiles = true;  ///< Temporary files that the system removes if they get no name.
    bool transfersWhole = true;  ///< If not, transfers are interrupted or move half of the requested bytes.
    bool flushesFolders = true;  ///< POSIX
    // POSIX: the error codes of unsupported calls.
    int renameError = EINVAL;
    int linkError = EPERM;
    int unnamedError = EOPNOTSUPP;
    int folderError = EINVAL;
    std::function<void(const SCall&)> beforeCall = [](const SCall&) {};
};

/// A system that removes no temporary files and has neither links nor renaming without replacing.
inline SSystem LimitedSystem() {
    SSystem system;
    system.renamesWithoutReplacing = false;
    system.linksFiles = false;
    system.vanishingFiles = false;
    return system;
}

/// Watches the calls of all threads on one folder and everything below it. Only one object may exist at a time.
class CWatchedCalls {
public:
    /// `folder` ends in a separator. A failing write writes the first half of its bytes; a failing close closes the
    /// file.
    explicit CWatchedCalls(std::string_view folder, const SFault& fault = {}, const SSystem& system = {});
    CWatchedCalls(const CWatchedCalls&) = delete;
    CWatchedCalls& operator=(const CWatchedCalls&) = delete;
    ~CWatchedCalls();

    /// All calls so far.
    std::vector<SCall> Calls() const;
    /// Whether the fault has occurred.
    bool HasFailed() const;
    /// Number of files and folders that are open.
    std::size_t OpenCount() const;
};

}  // namespace vantrel::test
