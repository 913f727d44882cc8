#include "iml/export/local_time.h"

#include <ctime>

#include "operation/text.h"

namespace vantrel {

SLocalTime LocalTimeNow() {
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
#ifdef _WIN32
    localtime_s(&local, &now);
#else
    localtime_r(&now, &local);
#endif
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

std::string DateText(const SLocalTime& time) {
    return Format("%04d/%02d/%02d", time.year, time.month, time.day);
}

std::string PlainDateText(const SLocalTime& time) {
    return Format("%04d%02d%02d", time.year, time.month, time.day);
}

std::string TimeText(const SLocalTime& time) {
    const int hour = time.hour % 12 == 0 ? 12 : time.hour % 12;
    return Format("%02d:%02d:%02d", hour, time.minute, time.second);
}

SLayoutTime LayoutTimeOf(const SLocalTime& time) {
    return {DateText(time), TimeText(time), PlainDateText(time)};
}

SLayoutTime LayoutTimeNow() {
    return LayoutTimeOf(LocalTimeNow());
}

}  // namespace vantrel
