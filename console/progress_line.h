// The one line on a terminal that tells how far a conversion is.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace vantrel {

/// "12.3 MB" and the like: bytes in decimal units with three significant figures.
std::string SizeText(double bytes);

/// The line: name, percent, bytes done, rate and remaining time. `fraction` is from 0 to 1, `totalBytes` the work as a
/// whole, `seconds` the time since the start.
std::string ProgressText(const std::string& name, double fraction, std::int64_t totalBytes, double seconds);

/// Draws the line on stderr, at most ten times a second, and removes it at the end.
class CProgressLine {
public:
    /// `shown` is false when stderr is no terminal or nothing shall be seen; then every call does nothing.
    CProgressLine(bool shown, std::string name, std::int64_t totalBytes);
    CProgressLine(const CProgressLine&) = delete;
    CProgressLine& operator=(const CProgressLine&) = delete;
    ~CProgressLine() { Clear(); }

    void Update(std::int64_t done, std::int64_t range);
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
