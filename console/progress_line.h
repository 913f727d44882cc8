// The progress line on a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace vantrel {

/// Bytes in decimal units with three significant figures: "12.3 MB".
std::string SizeText(double bytes);

/// The share of the units that are done, 0 to 1. Everything is done if there are none.
double FractionOf(std::int64_t done, std::int64_t total);

/// How far a conversion is.
struct SProgressState {
    double fraction;          ///< from 0 to 1
    std::int64_t totalBytes;  ///< the amount of work
    double seconds;           ///< since the start
};

/// The line: name, percentage, and as far as they fit bytes done, rate and remaining time. The name is shortened so
/// that the line takes at most so many columns, if these are enough for the percentage.
std::string ProgressText(const std::string& name, const SProgressState& state, int columns);

/// Draws the line on stderr, at most ten times a second, and removes it at the end.
class CProgressLine {
public:
    /// If `shown` is false, because stderr is not a terminal or the user wants no messages, no call does anything.
    CProgressLine(bool shown, const std::string& name, std::int64_t totalBytes);
    CProgressLine(const CProgressLine&) = delete;
    CProgressLine& operator=(const CProgressLine&) = delete;
    ~CProgressLine() { Clear(); }

    void Update(std::int64_t done, std::int64_t total);
    void Clear();

private:
    using Clock = std::chrono::steady_clock;

    bool m_shown;
    std::string m_name;
    std::int64_t m_totalBytes;
    Clock::time_point m_start = Clock::now();
    Clock::time_point m_drawn = m_start;
    bool m_onScreen = false;
};

/// Whether stderr is a terminal on which a line can be redrawn.
bool CanDrawProgress();

}  // namespace vantrel
