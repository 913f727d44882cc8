// The date and time that a layout is stamped with.
#pragma once

#include <string>

namespace vantrel {

/// A moment of local time.
struct SLocalTime {
    int year = 1970;
    int month = 1;
    int day = 1;
    int hour = 0;  ///< 0 to 23
    int minute = 0;
    int second = 0;
};

SLocalTime LocalTimeNow();

/// "yyyy/MM/dd"
std::string DateText(const SLocalTime& time);
/// "yyyyMMdd"
std::string PlainDateText(const SLocalTime& time);
/// "hh:mm:ss" with the hour from 01 to 12 and nothing that tells morning from afternoon.
std::string TimeText(const SLocalTime& time);

/// A moment in the three forms of a layout.
struct SLayoutTime {
    std::string date;       ///< see DateText
    std::string time;       ///< see TimeText
    std::string plainDate;  ///< see PlainDateText
};

SLayoutTime LayoutTimeOf(const SLocalTime& time);
SLayoutTime LayoutTimeNow();

}  // namespace vantrel
