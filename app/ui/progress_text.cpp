#include "app/ui/progress_text.h"

#include <algorithm>
#include <chrono>

#include "operation/text.h"

namespace vantrel {
namespace {

/// The time line calculates in 1/256 percent.
constexpr std::int64_t kFineWhole = 25600;
constexpr int kFineShift = 8;

constexpr std::int64_t kSecondsPerMinute = 60;
constexpr std::int64_t kSecondsPerHour = 3600;

std::int64_t DayOf(std::int64_t moment) {
    return moment / kTicksPerDay;
}

/// "2026/11/21/07 ": year, month, day and day of the week, where Sunday is 01.
std::string DateText(std::int64_t moment) {
    using namespace std::chrono;
    const sys_days day = sys_days(year(1601) / January / 1) + days(DayOf(moment));
    const year_month_day date(day);
    return Format("%04d/%02d/%02d/%02d ", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), weekday(day).c_encoding() + 1);
}

/// "13:07:59": the time of day of a moment, or the part of a time span below one day.
std::string ClockText(std::int64_t ticks) {
    const std::int64_t seconds = ticks % kTicksPerDay / kTicksPerSecond;
    return Format("%02d:%02d:%02d", static_cast<int>(seconds / kSecondsPerHour),
                  static_cast<int>(seconds % kSecondsPerHour / kSecondsPerMinute),
                  static_cast<int>(seconds % kSecondsPerMinute));
}

std::string SpanText(std::int64_t span) {
    const std::int64_t wholeDays = DayOf(span);
    const std::string dayText = wholeDays > 0 ? Format("%d:", static_cast<int>(wholeDays)) : "";
    return dayText + ClockText(span);
}

std::string MomentText(std::int64_t moment, std::int64_t now) {
    const std::string date = DayOf(moment) != DayOf(now) ? DateText(moment) : "";
    return date + ClockText(moment);
}

/// The estimated total time if `ratio` took `elapsed`.
std::int64_t WholeTime(std::int64_t elapsed, std::int64_t ratio) {
    if (ratio == 0) {
        return elapsed;
    }
    return elapsed / ratio * kFineWhole + elapsed % ratio * kFineWhole / ratio;
}

std::string TimeLine(const SProgress& progress, const SProgressTimes& times) {
    const std::int64_t elapsed = std::max<std::int64_t>(times.now - times.start, 0);
    const std::int64_t ratio = progress.Part(kFineWhole);
    const std::int64_t whole = WholeTime(elapsed, ratio);
    const int percent = static_cast<int>(ratio >> kFineShift);
    return MomentText(times.start, times.now) + " - " + SpanText(elapsed) + " - " + Format("%d%% / ", percent) +
           Format("%d%% - ", 100 - percent) + SpanText(whole - elapsed) + " - " +
           MomentText(times.start + whole, times.now);
}

}  // namespace

std::int64_t SProgress::Part(std::int64_t whole) const {
    const std::int64_t range = std::int64_t{upper} - lower;
    return range > 0 ? (std::int64_t{position} - lower) * whole / range : whole;
}

std::string ProgressText(EProgressText mode, const SProgress& progress, const SProgressTimes& times,
                         const SProgressCaptions& captions) {
    if (mode == EProgressText::None) {
        return {};
    }
    std::string line = mode == EProgressText::Percent ? Format("%d%%", static_cast<int>(progress.Part(100)))
                                                      : TimeLine(progress, times);
    if (mode == EProgressText::Times && !captions.caption.empty()) {
        line = " (" + line + ")";
    }
    return captions.prefix + captions.caption + line + captions.suffix;
}

}  // namespace vantrel
