#include "console/progress_line.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "console/characters.h"
#include "console/messages.h"
#include "files/native_console.h"
#include "operation/text.h"

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

std::string ProgressText(const std::string& name, const SProgressState& state, int columns) {
    constexpr int kShortestName = 8;
    const double done = state.fraction * static_cast<double>(state.totalBytes);
    std::string tail = Format("  %3.0f%%", state.fraction * 100);
    std::vector<std::string> details = {"  " + SizeText(done)};
    if (state.seconds >= kSecondsBeforeEstimate && state.fraction > 0) {
        details.push_back(Format("  %s/s", SizeText(done / state.seconds).c_str()));
        details.push_back(Format("  %s left", ClockText(state.seconds / state.fraction - state.seconds).c_str()));
    }
    const int nameColumns = std::min(ColumnsOf(name), kShortestName);
    for (const std::string& detail : details) {
        if (nameColumns + ColumnsOf(tail + detail) > columns) {
            break;
        }
        tail += detail;
    }
    return ShortenedTo(std::max(columns - ColumnsOf(tail), 0), name) + tail;
}

double FractionOf(std::int64_t done, std::int64_t total) {
    return total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 1.0;
}

CProgressLine::CProgressLine(bool shown, const std::string& name, std::int64_t totalBytes)
    : m_shown(shown), m_name(Escaped(name)), m_totalBytes(totalBytes) {}

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
    const double seconds = std::chrono::duration<double>(now - m_start).count();
    // Some terminals wrap already when the last column is used.
    const std::string text =
        ProgressText(m_name, {FractionOf(done, total), m_totalBytes, seconds}, TerminalColumns() - 1);
    std::fprintf(stderr, "\r\x1b[K%s", text.c_str());
    std::fflush(stderr);
}

void CProgressLine::Clear() {
    if (m_onScreen) {
        std::fputs("\r\x1b[K", stderr);
        std::fflush(stderr);
        m_onScreen = false;
    }
}

bool CanDrawProgress() {
    const char* const kind = std::getenv("TERM");
#ifdef _WIN32
    const bool canRedraw = kind == nullptr || std::string_view(kind) != "dumb";
#else
    const bool canRedraw = kind != nullptr && std::string_view(kind) != "dumb";
#endif
    return canRedraw && IsTerminal(EStream::Errors);
}

}  // namespace vantrel
