#include "iso/recording_date.h"

#include <chrono>
#include <tuple>

namespace vantrel {

std::optional<std::int64_t> SecondsOf(std::span<const std::uint8_t, 7> recordingDate) {
    constexpr int kFirstYear = 1900;
    constexpr int kQuartersOfADay =
        52;  // the largest offset from Greenwich in either direction, in quarters of an hour
    const auto [year, month, day, hour, minute, second, zone] =
        std::tuple(recordingDate[0], recordingDate[1], recordingDate[2], recordingDate[3], recordingDate[4],
                   recordingDate[5], static_cast<std::int8_t>(recordingDate[6]));
    const std::chrono::year_month_day date{std::chrono::year{kFirstYear + year}, std::chrono::month{month},
                                           std::chrono::day{day}};
    if (!date.ok() || hour > 23 || minute > 59 || second > 59 || zone < -kQuartersOfADay || zone > kQuartersOfADay) {
        return std::nullopt;
    }
    const auto local = std::chrono::sys_days{date} + std::chrono::hours{hour} + std::chrono::minutes{minute} +
                       std::chrono::seconds{second};
    return (local - std::chrono::minutes{15 * zone}).time_since_epoch().count();
}

}  // namespace vantrel
