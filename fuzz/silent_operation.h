// The runner of the fuzz targets: nothing is shown, a failure throws, and what runs for too long is interrupted like by
// Ctrl-C, since a layout of a few bytes may ask for gigabytes of zeros.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "fuzz/expect.h"
#include "operation/operation.h"

namespace vantrel::fuzz {

/// How a conversion ended other than by completing.
struct SEnded {
    std::string text;
    bool interrupted = false;
};

class CSilentOperation : public COperation {
public:
    using COperation::Complete;

    explicit CSilentOperation(std::optional<int> level = 1) : m_level(level) {}

    void SetPane(EPane /*pane*/, std::string_view text) override { m_shown += text.size(); }
    void EnableCommand(ECommand /*command*/, bool /*enabled*/) override {}
    void AcceptDroppedFiles() override {}
    std::optional<int> CompressionLevel() override { return m_level; }
    void StartProgress(std::int32_t range, EProgressFill /*fill*/) override { Expect(range >= 0, "a range of units"); }
    void StepProgress() override {}
    void SetProgressPosition(std::int32_t position) override { Expect(position >= 0, "a position in the range"); }
    void Notify(std::string_view text) override { Expect(!text.empty(), "a notice that says something"); }

    void PumpMessages() override {
        constexpr int kPatience = 20'000;
        if (++m_pumps > kPatience) {
            throw SEnded{"", true};
        }
    }

    bool Complete(std::string_view doneText, const std::function<void()>& report) override {
        Expect(!doneText.empty(), "a done text");
        report();
        return true;
    }

private:
    [[noreturn]] void EndWith(std::string_view text) override {
        Expect(!text.empty(), "a failure that says something");
        throw SEnded{std::string(text), false};
    }

    std::optional<int> m_level;
    std::size_t m_shown = 0;
    int m_pumps = 0;
};

/// Runs a conversion; nothing when it completed. Other exceptions are not caught: none may leave the engine.
template <typename Conversion>
std::optional<SEnded> EndingOf(Conversion conversion) {
    try {
        conversion();
        return std::nullopt;
    } catch (const SEnded& ended) {
        return ended;
    }
}

}  // namespace vantrel::fuzz
