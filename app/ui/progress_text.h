// The text that the progress bar can show over its fill: a percentage, or a line with times. Portable, so that every
// piece of the line is tested without a window.
#pragma once

#include <cstdint>
#include <string>

namespace vantrel {

enum class EProgressText { None, Percent, Times };

/// Moments are local time in units of 100 ns since the start of 1601 (a FILETIME).
inline constexpr std::int64_t kTicksPerSecond = 10'000'000;
inline constexpr std::int64_t kTicksPerDay = 864'000'000'000;

/// The range of a bar and the position in it.
struct SProgress {
    std::int32_t lower = 0;
    std::int32_t upper = 0;
    std::int32_t position = 0;

    /// The part done, in 1/`whole`, rounded down; all of it for an empty range.
    std::int64_t Part(std::int64_t whole) const;
};

/// The times between which the line reports.
struct SProgressTimes {
    std::int64_t start = 0;
    std::int64_t now = 0;
};

/// The texts around the line. A caption puts the line into parentheses.
struct SProgressCaptions {
    std::string prefix;
    std::string caption;
    std::string suffix;
};

/// Prefix, caption, percentage or time line, suffix; empty for EProgressText::None. The time line reads: start date
/// (when it is not today's), start time, time gone, percent done / percent left, time left, date (when it is not
/// today's) and time of the expected end.
std::string ProgressText(EProgressText mode, const SProgress& progress, const SProgressTimes& times,
                         const SProgressCaptions& captions);

}  // namespace vantrel
