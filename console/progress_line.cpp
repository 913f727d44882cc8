#include "console/progress_line.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "operation/text.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace vantrel {

namespace {

constexpr std::chrono::milliseconds kDrawInterval{100};
constexpr double kSecondsBeforeEstimate = 0.5;

std::string ClockText(double seconds) {
    const std::int64_t whole = std::llround(seconds);
    if (whole >= 3600) {
        return Format("%lld:%02lld:%02lld", static_cast<long long>(whole / 3600),
                      static_cast<long long>(whole / 60 % 60), static_cast<long long>(whole % 60));
    }
    return Format("%lld:%02lld", static_cast<long long>(whole / 60), static_cast<long long>(whole % 60));
}

}  // namespace

std::string SizeText(double bytes) {
    constexpr const char* kUnits[] = {"bytes", "kB", "MB", "GB", "TB"};
    std::size_t unit = 0;
    while (bytes >= 999.5 && unit + 1 < std::size(kUnits)) {
        bytes /= 1000;
        ++unit;
    }
    const int decimals = unit == 0 || bytes >= 99.95 ? 0 : bytes >= 9.995 ? 1 : 2;
    return Format("%.*f %s", decimals, bytes, kUnits[unit]);
}

std::string ProgressText(const std::string& name, double fraction, std::int64_t totalBytes, double seconds) {
    const double done = fraction * static_cast<double>(totalBytes);
    std::string text = Format("%s  %3.0f%%  %s", name.c_str(), fraction * 100, SizeText(done).c_str());
    if (seconds >= kSecondsBeforeEstimate && fraction > 0) {
        text += Format("  %s/s  %s left", SizeText(done / seconds).c_str(),
                       ClockText(seconds / fraction - seconds).c_str());
    }
    return text;
}

CProgressLine::CProgressLine(bool shown, std::string name, std::int64_t totalBytes)
    : m_shown(shown), m_name(std::move(name)), m_totalBytes(totalBytes) {}

void CProgressLine::Update(std::int64_t done, std::int64_t total) {
    if (!m_shown) {
        return;
    }
    const Clock::time_point now = Clock::now();
    if (m_onScreen && now - m_drawn < kDrawInterval) {
        return;
    }
    m_drawn = now;
    m_onScreen = true;
    const double fraction = total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 1.0;
    const double seconds = std::chrono::duration<double>(now - m_start).count();
    std::fprintf(stderr, "\r\x1b[K%s", ProgressText(m_name, fraction, m_totalBytes, seconds).c_str());
    std::fflush(stderr);
}

void CProgressLine::Clear() {
    if (m_onScreen) {
        std::fputs("\r\x1b[K", stderr);
        std::fflush(stderr);
        m_onScreen = false;
    }
}

bool IsTerminal() {
    const char* kind = std::getenv("TERM");
#ifdef _WIN32
    return ::_isatty(2) != 0 && (kind == nullptr || std::string_view(kind) != "dumb");
#else
    return ::isatty(STDERR_FILENO) != 0 && kind != nullptr && std::string_view(kind) != "dumb";
#endif
}

}  // namespace vantrel
