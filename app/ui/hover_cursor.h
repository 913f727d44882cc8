// The hand-shaped pointer over buttons and links. All of them share one object.
#pragma once

#include <windows.h>

namespace vantrel {

class CHoverCursor {
public:
    CHoverCursor() : m_cursor(LoadCursorW(nullptr, IDC_HAND)) {}

    /// Shows the hand. Returns false if the system has none; then the pointer does not change.
    bool Show() const {
        if (m_cursor != nullptr) {
            SetCursor(m_cursor);
        }
        return m_cursor != nullptr;
    }

private:
    HCURSOR m_cursor;  // owned by the system
};

}  // namespace vantrel
