// The runner of the fuzz targets. It checks what a conversion reports, and interrupts conversions that run for too
// long, because a layout of a few bytes may ask for gigabytes of zeros.
#pragma once

#include <optional>
#include <string>

#include "fuzz/expect.h"
#include "operation/operation.h"

namespace vantrel::fuzz {

/// Thrown like an interrupt by the user.
struct SInterrupted {};

class CSilentOperation : public COperation {
public:
    using COperation::Complete;

    void SetTotal(std::int64_t units) override {
        Expect(units >= 0, "the total is not negative");
        m_total = units;
    }
    void SetDone(std::int64_t units) override { Expect(units >= 0 && units <= m_total, "at most all units are done"); }
    void Notify(std::string_view text) override { Expect(!text.empty(), "a notice has a text"); }

    void Yield() override {
        constexpr int kMaxYields = 20'000;
        if (++m_yields > kMaxYields) {
            throw SInterrupted();
        }
    }

    bool Complete(std::string_view doneText, const std::function<void()>& report) override {
        Expect(!doneText.empty(), "a completed conversion has a done text");
        report();
        return true;
    }

private:
    std::int64_t m_total = 0;
    int m_yields = 0;
};

/// Runs a conversion. Returns why it ended early, and nullopt if it completed. Catches no other exceptions, because
/// none may leave the engine.
template <typename Conversion>
std::optional<std::string> EndingOf(Conversion conversion) {
    try {
        conversion();
        return std::nullopt;
    } catch (const CConversionFailed& failure) {
        Expect(*failure.what() != '\0', "a failure has a text");
        return failure.what();
    } catch (const SInterrupted&) {
        return "interrupted";
    }
}

}  // namespace vantrel::fuzz
