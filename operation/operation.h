// What a conversion tells the program that runs it. The window, the console program and the tests each derive from
// COperation; a conversion never knows which of them it talks to.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

#undef Yield  // an empty macro of windows.h

namespace vantrel {

/// The conversions, for runners that treat them differently. A rebuild begins as ImlToIso and, once the medium is
/// known, again as the rebuild of that medium.
enum class EConversion {
    IsoToIml,
    ImlToIso,
    ImlToCdImage,
    ImlToDvdImage,
    IsoToBin,
    BinToIso,
    IsoToCso,
    CsoToIso,
    IsoToDax,
    DaxToIso,
    CheckPostgap,
    AddPostgap,
};

/// The four panes of the status bar, in their order.
enum class EPane { File, Bytes, Status, Percent };

/// What COperation::Fail throws unless the runner ends in another way; what() is the conversion's text.
class CConversionFailed : public std::runtime_error {
public:
    explicit CConversionFailed(const std::string& text, std::string_view cause = {})
        : std::runtime_error(text), m_cause(cause) {}

    /// File and cause, like "game.cso: No space left on device"; empty if the text says everything.
    const std::string& Cause() const { return m_cause; }

private:
    std::string m_cause;
};

/// The link between one conversion and its runner. Every call has a default, so a runner overrides only what it shows;
/// a plain COperation runs a conversion in silence.
///
/// Texts are UTF-8. Every call returns at once except Notify and Complete, which may wait for the user, and Fail, which
/// never returns. Only Yield and Fail may throw; the engine catches nothing.
class COperation {
public:
    virtual ~COperation() = default;

    /// Announces the conversion, so that the runner can lock whatever must not be used meanwhile.
    virtual void Begin(EConversion /*conversion*/) {}

    /// Puts a text into a pane of the status bar.
    virtual void SetPane(EPane /*pane*/, std::string_view /*text*/) {}

    /// Announces the amount of work: `units` is 0 or more.
    virtual void SetTotal(std::int64_t /*units*/) {}

    /// Reports how many units are done, from 0 to the total.
    virtual void SetDone(std::int64_t /*units*/) {}

    /// Processes pending window messages; in the console program, acts on Ctrl-C.
    virtual void Yield() {}

    /// Shows a notice and continues.
    virtual void Notify(std::string_view /*text*/) {}

    /// Reports that the output is written, but lacks something of the input. The console program then ends with
    /// status 1.
    virtual void Warn(std::string_view text) { Notify(text); }

    /// Reports why the conversion cannot continue, and ends it. `cause` adds what the text does not say: the file and
    /// the system's reason.
    [[noreturn]] void Fail(std::string_view text, std::string_view cause = {}) {
        EndWith(text, cause);
        std::abort();
    }

    /// Reports success. Calls `report` once, before the runner shows the done text. Returns false, without calling
    /// `report`, if the runner leaves the completion early (the window does if no sound is selected).
    virtual bool Complete(std::string_view /*doneText*/, const std::function<void()>& report) {
        report();
        return true;
    }

    /// Reports success without a final report.
    bool Complete(std::string_view doneText) {
        return Complete(doneText, [] {});
    }

private:
    /// Ends the conversion; must not return. Fail itself is not virtual because compilers do not rely on [[noreturn]]
    /// in virtual calls.
    virtual void EndWith(std::string_view text, std::string_view cause) {
        throw CConversionFailed(std::string(text), cause);
    }
};

}  // namespace vantrel
