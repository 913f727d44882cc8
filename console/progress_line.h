// The progress line on a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace vantrel {

/// Bytes in decimal units with three significant figures: "12.3 MB".
std::string SizeText(double bytes);

/// The line: name, percentage, bytes done, rate and remaining time. `fraction` is from 0 to 1, `totalBytes` is the
/// amount of work, `seconds` the time since the start.
std::string ProgressText(const std::string& name, double fraction, std::int64_t totalBytes, double seconds);

/// Draws the line on stderr, at most ten times a second, and removes it at the end.
class CProgressLine {
public:
    /// If `shown` is false, because stderr is not a terminal or the user wants no messages, no call does anything.
    CProgressLine(bool shown, std::string name, std::int64_t totalBytes);
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
bool IsTerminal();

}  // namespace vantrel
