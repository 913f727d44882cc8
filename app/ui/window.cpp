#include "app/ui/window.h"

namespace vantrel {

std::wstring CWindow::Text() const {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(m_window)), L'\0');
    const int length = GetWindowTextW(m_window, text.data(), static_cast<int>(text.size()) + 1);
    text.resize(static_cast<std::size_t>(length));
    return text;
}

RECT CWindow::ScreenRect() const {
    RECT rect{};
    GetWindowRect(m_window, &rect);
    return rect;
}

std::wstring CComboBox::EntryText(int index) const {
    const LRESULT length = Send(CB_GETLBTEXTLEN, static_cast<WPARAM>(index));
    if (length <= 0) {
        return {};
    }
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    Send(CB_GETLBTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text.data()));
    return text;
}

std::wstring StringResource(UINT id) {
    const wchar_t* text = nullptr;
    const int length = LoadStringW(GetModuleHandleW(nullptr), id, reinterpret_cast<LPWSTR>(&text), 0);
    return length > 0 ? std::wstring(text, static_cast<std::size_t>(length)) : std::wstring();
}

}  // namespace vantrel
