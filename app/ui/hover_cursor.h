// The pointer that buttons and links show while it is over them: a hand. One object is shared by all of them.
#pragma once

#include <windows.h>

namespace vantrel {

class CHoverCursor {
public:
    CHoverCursor() : m_cursor(LoadCursorW(nullptr, IDC_HAND)) {}

    /// Shows the hand; false where the system has none, and the pointer stays as it is.
    bool Show() const {
        if (m_cursor != nullptr) {
            SetCursor(m_cursor);
        }
        return m_cursor != nullptr;
    }

private:
    HCURSOR m_cursor;  // shared with the system, never freed
};

}  // namespace vantrel
