// The optional text of the progress bar: a percentage, or a line with times. Portable, so that it is tested without a
// window.
#pragma once

#include <cstdint>
#include <string>

namespace vantrel {

enum class EProgressText { None, Percent, Times };

/// Moments are local times in units of 100 ns since the start of 1601 (FILETIME).
inline constexpr std::int64_t kTicksPerSecond = 10'000'000;
inline constexpr std::int64_t kTicksPerDay = 864'000'000'000;

/// The range of a bar and the position in it.
struct SProgress {
    std::int32_t lower = 0;
    std::int32_t upper = 0;
    std::int32_t position = 0;

    /// The completed part in units of 1/`whole`, rounded down. `whole` for an empty range.
    std::int64_t Part(std::int64_t whole) const;
};

struct SProgressTimes {
    std::int64_t start = 0;
    std::int64_t now = 0;
};

/// The texts around the line. With a caption, the line is put in parentheses.
struct SProgressCaptions {
    std::string prefix;
    std::string caption;
    std::string suffix;
};

/// Prefix, caption, percentage or time line, suffix. Empty for EProgressText::None. The time line consists of the start
/// date (unless it is today), start time, elapsed time, percent done / percent left, remaining time, and the date
/// (unless it is today) and time of the estimated end.
std::string ProgressText(EProgressText mode, const SProgress& progress, const SProgressTimes& times,
                         const SProgressCaptions& captions);

}  // namespace vantrel
