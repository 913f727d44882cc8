// How often the window paints figures that change with every block: no more than a display shows.
#pragma once

#include <windows.h>

namespace vantrel {

class CPaintClock {
public:
    /// Whether the last painting is long enough ago.
    bool IsDue() const { return GetTickCount64() - m_lastPaint >= kInterval; }
    void Painted() { m_lastPaint = GetTickCount64(); }

private:
    static constexpr ULONGLONG kInterval = 30;  // milliseconds

    ULONGLONG m_lastPaint = 0;
};

}  // namespace vantrel
