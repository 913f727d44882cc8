// What a conversion may say to whoever runs it. The window, the console program and the tests each implement
// COperation; a conversion never knows which of them it talks to.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string_view>

namespace vantrel {

/// The four panes of the status bar, in their order.
enum class EPane { File, Bytes, Status, Percent };

/// The controls that a conversion may grey or enable. The value is the control's id in the main dialog.
enum class ECommand : std::int32_t {
    Browse = 1,
    IsoToIml = 1001,
    Vantrel = 1005,
    IsoToBin = 1012,
    BinToIso = 1021,
    FullPath = 1025,
    RelativePath = 1026,
    IsoToDax = 1029,
    DaxToIso = 1030,
    CompressionLevel = 1031,
    CheckPostgap = 1032,
    IsoToCso = 1033,
    CsoToIso = 1034,
    AddSelectivePostgap = 1035,
};

/// The bitmap that fills the progress bar. The value is the bitmap's resource id.
enum class EProgressFill : std::int32_t { Cd = 187, Dvd = 189 };

/// The conversation of one conversion with its runner.
///
/// Texts are UTF-8. Every call returns at once except Notify and Complete, which may wait for the user, and Fail,
/// which never returns: the window ends the process, the other runners throw their own exception, which the
/// engine neither catches nor knows. PumpMessages is the only place where anything else may happen meanwhile.
class COperation {
public:
    virtual ~COperation() = default;

    /// Puts a text into a pane of the status bar.
    virtual void SetPane(EPane pane, std::string_view text) = 0;

    /// Greys or enables one control of the main dialog.
    virtual void EnableCommand(ECommand command, bool enabled) = 0;

    /// Lets the window accept dropped files again.
    virtual void AcceptDroppedFiles() = 0;

    /// The chosen compression level, 1 to 9; nothing when no entry of the list is selected.
    virtual std::optional<int> CompressionLevel() = 0;

    /// Creates the progress bar with the range 0 to `range` (units of work, never negative) and the step 1.
    virtual void StartProgress(std::int32_t range, EProgressFill fill) = 0;

    /// Moves the bar on by one unit, at most to the end of its range.
    virtual void StepProgress() = 0;

    /// Moves the bar to a position of its range.
    virtual void SetProgressPosition(std::int32_t position) = 0;

    /// Lets everything else that waits for this thread happen.
    virtual void PumpMessages() = 0;

    /// Tells something and goes on.
    virtual void Notify(std::string_view text) = 0;

    /// Tells why the conversion cannot go on, and ends it.
    [[noreturn]] void Fail(std::string_view text) {
        EndWith(text);
        std::abort();
    }

    /// Runs the completion: done message, sound, buttons, removal of the bar. When the completion is left early
    /// (no sound entry is selected) it says and changes nothing and returns false. Otherwise `report` is called
    /// once, before the done message is shown, and true is returned when all is over.
    virtual bool Complete(std::string_view doneText, const std::function<void()>& report) = 0;

    /// Completes without a last report.
    bool Complete(std::string_view doneText) {
        return Complete(doneText, [] {});
    }

private:
    /// The runner's way to fail; must not return. (A virtual function is not taken as non-returning by every compiler
    /// at the place of the call, so Fail itself is none.)
    virtual void EndWith(std::string_view text) = 0;
};

}  // namespace vantrel
