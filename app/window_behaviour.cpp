// The main dialog as a window: position, animation, Always On Top, the About item, and the title effect.
#include "app/main_dialog.h"
#include "app/ui/about_box.h"
#include "app/ui/scaling.h"
#include "resources/resource_ids.h"

namespace vantrel {
namespace {

/// The system uses the low four bits of a system command.
constexpr WPARAM kSystemCommandMask = 0xFFF0;

/// The position of a mouse message, in the client area.
POINT PointOf(LPARAM position) {
    return {static_cast<short>(LOWORD(position)), static_cast<short>(HIWORD(position))};
}

}  // namespace

void CMainDialog::OnCreate() {
    RECT rect = ScreenRect();
    const int width = rect.right - rect.left;
    const int height = rect.bottom - rect.top;
    const int left = GetSystemMetrics(SM_CXSCREEN) / 2 - width / 2;
    const int top = GetSystemMetrics(SM_CYSCREEN) / 2 - height / 2;
    SetWindowPos(m_window, nullptr, left, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    rect = {left, top, left + width, top + height};
    m_animation.SetStyle(kAnimateZoom);
    m_animation.Open(m_window, rect);
}

void CMainDialog::PlayClosingAnimation() {
    m_animation.SetStyle(kAnimateZoom);
    m_animation.Close(m_window, ScreenRect());
}

bool CMainDialog::OnSysCommand(WPARAM command) {
    if ((command & kSystemCommandMask) != IDM_ABOUTBOX) {
        return false;
    }
    RunAboutBox(m_window);
    return true;
}

/// Draws the icon of the minimised window. Returns false if the window is not minimised.
bool CMainDialog::OnPaint() {
    if (IsIconic(m_window) == FALSE) {
        return false;
    }
    PAINTSTRUCT paint{};
    const HDC context = BeginPaint(m_window, &paint);
    RECT client{};
    GetClientRect(m_window, &client);
    const int x = (client.right - client.left - GetSystemMetrics(SM_CXICON) + 1) / 2;
    const int y = (client.bottom - client.top - GetSystemMetrics(SM_CYICON) + 1) / 2;
    DrawIcon(context, x, y, m_hIcon);
    EndPaint(m_window, &paint);
    return true;
}

void CMainDialog::OnAlwaysOnTop() {
    m_topMostFlag = m_topMostCheck.State();
    SetWindowPos(m_window, m_topMostFlag == BST_CHECKED ? HWND_TOPMOST : HWND_NOTOPMOST, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE);
}

void CMainDialog::OnEffect() {
    m_effectTimer = SetTimer(m_window, kEffectTimer, kEffectPeriod, nullptr);
    m_effectFlag = m_effectCheck.State();
}

bool CMainDialog::OnTimer(UINT_PTR timer) {
    if (timer != kEffectTimer) {
        return false;
    }
    m_effect.SetResolution(ResolutionOf(m_window));
    m_effect.Advance();
    m_effect.PaintInto(m_window);
    return true;
}

void CMainDialog::OnMouseMove(LPARAM position) {
    m_effect.DropAt(PointOf(position), kMoveDrop);
}

void CMainDialog::OnLButtonDown(LPARAM position) {
    m_effect.DropAt(PointOf(position), kClickDrop);
}

}  // namespace vantrel
