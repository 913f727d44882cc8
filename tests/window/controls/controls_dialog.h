// The dialog of the control tests, which counts the notifications of its controls.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "app/ui/memory_bitmap.h"
#include "tests/window/controls/controls_test.h"
#include "tests/window/driver/poll.h"

namespace vantrel::test {

class CControlsDialog : public ::testing::Test {
protected:
    CControlsDialog()
        : m_dialog(CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_CONTROLS), nullptr, &Receive,
                                      reinterpret_cast<LPARAM>(this))) {
        ShowWindow(m_dialog, SW_SHOW);
        SetForegroundWindow(m_dialog);
        Pump();
    }
    ~CControlsDialog() override { DestroyWindow(m_dialog); }

    HWND Control(int id) const { return GetDlgItem(m_dialog, id); }

    /// Processes all pending messages like a modal dialog.
    void Pump() const {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
            if (IsDialogMessageW(m_dialog, &message) == FALSE) {
                TranslateMessage(&message);
                DispatchMessageW(&message);
            }
        }
    }

    /// Presses and releases a key while `control` has the focus.
    void Type(HWND control, WPARAM key) const {
        SetFocus(control);
        PostMessageW(control, WM_KEYDOWN, key, 1);
        PostMessageW(control, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
        Pump();
    }

    void Click(HWND control) const {
        SendMessageW(control, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
        SendMessageW(control, WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
    }

    /// The current appearance of a control.
    static std::vector<std::uint32_t> Picture(HWND control) {
        RECT client;
        GetClientRect(control, &client);
        const CMemoryBitmap bitmap(client.right, client.bottom);
        SendMessageW(control, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(bitmap.Dc()), PRF_CLIENT);
        GdiFlush();
        std::vector<std::uint32_t> pixels(bitmap.Pixels(), bitmap.Pixels() + client.right * client.bottom);
        for (std::uint32_t& pixel : pixels) {
            pixel &= 0xFFFFFF;
        }
        return pixels;
    }

    /// Number of clicks that each control reported, by id.
    int Clicks(int id) const { return static_cast<int>(std::count(m_clicks.begin(), m_clicks.end(), id)); }

    HWND m_dialog;
    std::vector<int> m_clicks;

private:
    static INT_PTR CALLBACK Receive(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_INITDIALOG) {
            SetWindowLongPtrW(dialog, DWLP_USER, lParam);
            return TRUE;
        }
        auto* self = reinterpret_cast<CControlsDialog*>(GetWindowLongPtrW(dialog, DWLP_USER));
        if (message == WM_COMMAND && HIWORD(wParam) == BN_CLICKED && self != nullptr) {
            self->m_clicks.push_back(LOWORD(wParam));
            return TRUE;
        }
        return FALSE;
    }
};

}  // namespace vantrel::test
