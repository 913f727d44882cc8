// A thin layer over window handles, for the dialog and its controls.
#pragma once

#include <windows.h>

#include <string>

namespace vantrel {

/// A window that is not owned by this object; the system destroys it with its parent.
class CWindow {
public:
    CWindow() = default;
    explicit CWindow(HWND window) : m_window(window) {}

    HWND Handle() const { return m_window; }
    bool Exists() const { return m_window != nullptr && IsWindow(m_window) != FALSE; }
    void Attach(HWND window) { m_window = window; }

    LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
        return SendMessageW(m_window, message, wParam, lParam);
    }
    void Enable(bool enabled) const { EnableWindow(m_window, enabled ? TRUE : FALSE); }

    std::wstring Text() const;
    void SetText(const std::wstring& text) const { SetWindowTextW(m_window, text.c_str()); }

    RECT ScreenRect() const;

protected:
    HWND m_window = nullptr;
};

/// A drop-down list.
class CComboBox : public CWindow {
public:
    int Count() const { return static_cast<int>(Send(CB_GETCOUNT)); }
    /// The selected index; -1 if nothing is selected.
    int Selection() const { return static_cast<int>(Send(CB_GETCURSEL)); }
    void Select(int index) const { Send(CB_SETCURSEL, static_cast<WPARAM>(index)); }
    std::wstring EntryText(int index) const;
    void Add(const std::wstring& text) const { Send(CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str())); }
};

/// A check box.
class CCheckBox : public CWindow {
public:
    int State() const { return static_cast<int>(Send(BM_GETCHECK)); }
    void SetState(int state) const { Send(BM_SETCHECK, static_cast<WPARAM>(state)); }
};

/// The text of an entry of the string table. Empty if there is none.
std::wstring StringResource(UINT id);

}  // namespace vantrel
