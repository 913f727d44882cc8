// The system calls of the file layer, watched and made to fail. A program that links vantrel_watched_calls has the
// linker put these calls in place of the system's own, so that the real file layer runs, unchanged, on a system on
// which anything can go wrong. Calls about other folders than the watched one pass through.
#pragma once

#include <compare>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vantrel::test {

enum class ECall {
    Open,
    Close,
    Read,
    ReadEnd,  ///< A read behind the last byte, which only tells that it was the last.
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
    List
};

/// One call: what was asked, and of which file, by its path below the watched folder. The random part of a temporary
/// name is left out.
struct SCall {
    ECall kind = ECall::Open;
    std::string file;
    bool written = false;  ///< Whether the file was open for writing.

    auto operator<=>(const SCall&) const = default;
};

/// "read game.iso", "close game.cso (written)"
std::string TextOf(const SCall& call);

/// Which call is to fail: the `number`-th (from 1) of those equal to `call`.
struct SFault {
    SCall call;
    std::size_t number = 0;  ///< 0: none fails.
};

/// What a call fails for: whatever needs room for want of it, everything else because of the device.
enum class EFailure { Device, NoSpace };

/// What LastFileError says of it.
std::string SystemText(EFailure failure);

/// A system on which some things are not to be had. What they fail with is what such systems answer.
struct SSystem {
    bool renamesWithoutReplacing = true;  ///< POSIX: renameat2 with RENAME_NOREPLACE
    bool linksFiles = true;
    bool transfersWhole = true;  ///< Otherwise reads and writes are interrupted, or move one half of what was asked.
};

/// Watches the calls about one folder and what is below it, of all threads, for the time of its life. One at a time.
class CWatchedCalls {
public:
    /// `folder` ends in the separator. A failing write leaves the first half of its bytes in the file; a failing close
    /// closes.
    explicit CWatchedCalls(std::string_view folder, const SFault& fault = {}, const SSystem& system = {});
    CWatchedCalls(const CWatchedCalls&) = delete;
    CWatchedCalls& operator=(const CWatchedCalls&) = delete;
    ~CWatchedCalls();

    /// All calls so far.
    std::vector<SCall> Calls() const;
    /// Whether the fault has come to pass.
    bool HasFailed() const;
    /// Number of files and folders that were opened and not closed.
    std::size_t OpenCount() const;
};

}  // namespace vantrel::test
