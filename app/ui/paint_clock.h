// Limits how often the window paints values that change with every block.
#pragma once

#include <windows.h>

namespace vantrel {

class CPaintClock {
public:
    /// Whether the interval since the last painting has passed.
    bool IsDue() const { return GetTickCount64() - m_lastPaint >= kInterval; }
    void Painted() { m_lastPaint = GetTickCount64(); }

private:
    static constexpr ULONGLONG kInterval = 30;  // milliseconds

    ULONGLONG m_lastPaint = 0;
};

}  // namespace vantrel
