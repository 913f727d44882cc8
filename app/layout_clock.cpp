#include "app/layout_clock.h"

#include <windows.h>

#include <array>

namespace vantrel {
namespace {

/// Characters of the longest text.
constexpr int kRoom = 32;
using Text = std::array<char, kRoom>;

std::string DateIn(const SYSTEMTIME& time, const char* form) {
    Text text = {};
    GetDateFormatA(LOCALE_SYSTEM_DEFAULT, 0, &time, form, text.data(), kRoom);
    return text.data();
}

std::string TimeIn(const SYSTEMTIME& time, const char* form) {
    Text text = {};
    GetTimeFormatA(LOCALE_SYSTEM_DEFAULT, 0, &time, form, text.data(), kRoom);
    return text.data();
}

}  // namespace

SLayoutTime SystemLayoutTime() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    return {DateIn(now, "yyyy/MM/dd"), TimeIn(now, "hh:mm:ss"), DateIn(now, "yyyyMMdd")};
}

}  // namespace vantrel
