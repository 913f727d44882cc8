// The button becomes owner-drawn, so that it does not paint itself, and is painted here on WM_PAINT. Owner-drawn
// buttons lose their default-button style and report double clicks; both are corrected here.
#include "app/ui/icon_button.h"

#include <commctrl.h>
#include <vssym32.h>

#include <algorithm>
#include <array>

#include "app/ui/memory_bitmap.h"
#include "app/ui/scaling.h"

namespace vantrel {
namespace {

constexpr UINT_PTR kSubclassId = 1;
// Lengths in pixels of a display at 100 %.
constexpr int kEdge = 3;       // from the button's edge to its content
constexpr int kPadding = 2;    // between content and its surroundings
constexpr int kGap = 4;        // between icon and text
constexpr int kIconAxis = 24;  // from the button's left edge to the middle of the icon before a text
constexpr int kLargestIcon = 32;
constexpr int kSmallestIcon = 16;
constexpr int kLongestText = 256;
constexpr UINT kDisplayChanged = 0x02E3;  // WM_DPICHANGED_AFTERPARENT

/// The text of a window and its size in the current font.
struct SCaption {
    explicit SCaption(HWND window, HDC dc) {
        GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
        RECT extent = {};
        DrawTextW(dc, text.data(), -1, &extent, DT_SINGLELINE | DT_CALCRECT);
        size = {extent.right, extent.bottom};
    }

    bool IsEmpty() const { return text[0] == L'\0'; }

    std::array<wchar_t, kLongestText> text = {};
    SIZE size = {};
};

/// Selects the font of a window into a device context during the object's life.
class CFontInUse {
public:
    CFontInUse(HDC dc, HWND window) : m_dc(dc) {
        const auto font = reinterpret_cast<HGDIOBJ>(SendMessageW(window, WM_GETFONT, 0, 0));
        m_former = SelectObject(dc, font != nullptr ? font : GetStockObject(DEFAULT_GUI_FONT));
    }
    ~CFontInUse() { SelectObject(m_dc, m_former); }
    CFontInUse(const CFontInUse&) = delete;
    CFontInUse& operator=(const CFontInUse&) = delete;

private:
    HDC m_dc;
    HGDIOBJ m_former;
};

void Frame(HDC dc, const RECT& rectangle, int colour) {
    FrameRect(dc, &rectangle, GetSysColorBrush(colour));
}

}  // namespace

CIconButton::~CIconButton() {
    Detach();
}

void CIconButton::Attach(HWND button) {
    Detach();
    m_window = button;
    const LONG_PTR style = GetWindowLongPtrW(button, GWL_STYLE);
    m_isDefault = (style & BS_TYPEMASK) == BS_DEFPUSHBUTTON;
    SetWindowLongPtrW(button, GWL_STYLE, (style & ~static_cast<LONG_PTR>(BS_TYPEMASK)) | BS_OWNERDRAW);
    SetWindowSubclass(button, &CIconButton::Receive, kSubclassId, reinterpret_cast<DWORD_PTR>(this));
    OpenTheme();
    Redraw();
}

void CIconButton::Detach() {
    if (m_window != nullptr) {
        RemoveWindowSubclass(m_window, &CIconButton::Receive, kSubclassId);
        m_themes.Close(m_theme);
        m_theme = nullptr;
        m_window = nullptr;
    }
}

void CIconButton::SetHoverCursor(const CHoverCursor* cursor) {
    m_cursor = cursor;
}

void CIconButton::SetIcon(int iconId) {
    m_iconId = iconId;
    Redraw();
}

void CIconButton::OpenTheme() {
    m_themes.Close(m_theme);
    m_theme = m_themes.Open(m_window, L"BUTTON");
}

void CIconButton::Redraw() const {
    if (m_window != nullptr) {
        InvalidateRect(m_window, nullptr, FALSE);
    }
}

LRESULT CALLBACK CIconButton::Receive(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR /*id*/,
                                      DWORD_PTR self) {
    auto* button = reinterpret_cast<CIconButton*>(self);
    if (message == WM_NCDESTROY) {
        button->Detach();
        return DefSubclassProc(window, message, wParam, lParam);
    }
    return button->OnMessage(message, wParam, lParam);
}

LRESULT CIconButton::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_PAINT: {
            PAINTSTRUCT paint;
            PaintBuffered(BeginPaint(m_window, &paint));
            EndPaint(m_window, &paint);
            return 0;
        }
        case WM_PRINTCLIENT:
            Paint(reinterpret_cast<HDC>(wParam));
            return 0;
        case WM_ERASEBKGND:
            return TRUE;
        case WM_GETDLGCODE:
            return DialogCode(wParam, lParam);
        case BM_SETSTYLE:
            SetDefault((wParam & BS_TYPEMASK) == BS_DEFPUSHBUTTON);
            return 0;
        case BCM_GETIDEALSIZE:
            *reinterpret_cast<SIZE*>(lParam) = IdealSize();
            return TRUE;
        case BM_CLICK:
            if (IsWindowEnabled(m_window) == FALSE) {
                return 0;
            }
            break;
        case WM_LBUTTONDBLCLK:
            return SendMessageW(m_window, WM_LBUTTONDOWN, wParam, lParam);
        case WM_SETCURSOR:
            if (m_cursor != nullptr && LOWORD(lParam) == HTCLIENT && m_cursor->Show()) {
                return TRUE;
            }
            break;
        case WM_MOUSEMOVE:
            TrackPointer();
            break;
        case WM_MOUSELEAVE:
            m_isHot = false;
            Redraw();
            break;
        case kDisplayChanged:
        case WM_THEMECHANGED:
            OpenTheme();
            Redraw();
            break;
        case BM_SETSTATE:
        case WM_ENABLE:
        case WM_SETTEXT:
        case WM_SETFONT:
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
        case WM_CAPTURECHANGED:
        case WM_UPDATEUISTATE:
        case WM_SYSCOLORCHANGE:
        case WM_SIZE: {
            const LRESULT result = DefSubclassProc(m_window, message, wParam, lParam);
            Redraw();
            return result;
        }
        default:
            break;
    }
    return DefSubclassProc(m_window, message, wParam, lParam);
}

LRESULT CIconButton::DialogCode(WPARAM wParam, LPARAM lParam) const {
    const LRESULT kinds = DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON;
    return (DefSubclassProc(m_window, WM_GETDLGCODE, wParam, lParam) & ~kinds) | DLGC_BUTTON |
           (m_isDefault ? DLGC_DEFPUSHBUTTON : DLGC_UNDEFPUSHBUTTON);
}

void CIconButton::SetDefault(bool isDefault) {
    if (isDefault != m_isDefault) {
        m_isDefault = isDefault;
        Redraw();
    }
}

void CIconButton::TrackPointer() {
    if (m_isHot) {
        return;
    }
    TRACKMOUSEEVENT track = {};
    track.cbSize = sizeof track;
    track.dwFlags = TME_LEAVE;
    track.hwndTrack = m_window;
    m_isHot = TrackMouseEvent(&track) != FALSE;
    Redraw();
}

SIZE CIconButton::IdealSize() const {
    const HDC dc = GetDC(m_window);
    SIZE ideal = {};
    {
        const CFontInUse font(dc, m_window);
        const SCaption caption(m_window, dc);
        const int icon = m_iconId != 0 ? kSmallestIcon : 0;
        const int border = 2 * Scaled(m_window, kEdge + kPadding);
        const int gap = icon != 0 && !caption.IsEmpty() ? Scaled(m_window, kGap) : 0;
        ideal.cx = icon + gap + caption.size.cx + border;
        ideal.cy = std::max<LONG>(icon, caption.size.cy) + border;
    }
    ReleaseDC(m_window, dc);
    return ideal;
}

CIconButton::SLook CIconButton::Look() const {
    const LRESULT state = SendMessageW(m_window, BM_GETSTATE, 0, 0);
    const LRESULT hints = SendMessageW(m_window, WM_QUERYUISTATE, 0, 0);
    return {(state & BST_PUSHED) != 0, m_isHot, IsWindowEnabled(m_window) == FALSE, m_isDefault,
            GetFocus() == m_window && (hints & UISF_HIDEFOCUS) == 0};
}

void CIconButton::PaintBuffered(HDC target) const {
    RECT whole;
    GetClientRect(m_window, &whole);
    const CMemoryBitmap buffer(std::max<LONG>(whole.right, 1), std::max<LONG>(whole.bottom, 1));
    if (buffer.Pixels() == nullptr) {
        Paint(target);
        return;
    }
    Paint(buffer.Dc());
    BitBlt(target, 0, 0, whole.right, whole.bottom, buffer.Dc(), 0, 0, SRCCOPY);
}

void CIconButton::Paint(HDC dc) const {
    const SLook look = Look();
    const CFontInUse font(dc, m_window);
    RECT content;
    GetClientRect(m_window, &content);
    PaintFrame(dc, content, look);
    PaintContent(dc, content, look);
}

void CIconButton::PaintFrame(HDC dc, RECT& content, const SLook& look) const {
    // Rounded down, so that at 150 % the content has 40 pixels for an icon of that size.
    const int edge = kEdge * ResolutionOf(m_window) / USER_DEFAULT_SCREEN_DPI;
    if (m_theme != nullptr) {
        PaintThemedFrame(dc, content, look);
    } else {
        PaintClassicFrame(dc, content, look);
        OffsetRect(&content, look.isPressed ? 1 : 0, look.isPressed ? 1 : 0);
    }
    InflateRect(&content, -edge, -edge);
    if (look.showsFocus) {
        SetTextColor(dc, GetSysColor(COLOR_BTNTEXT));
        SetBkColor(dc, GetSysColor(COLOR_BTNFACE));
        DrawFocusRect(dc, &content);
    }
}

void CIconButton::PaintThemedFrame(HDC dc, const RECT& whole, const SLook& look) const {
    const int state = look.isDisabled  ? PBS_DISABLED
                      : look.isPressed ? PBS_PRESSED
                      : look.isHot     ? PBS_HOT
                      : look.isDefault ? PBS_DEFAULTED
                                       : PBS_NORMAL;
    m_themes.DrawParentBackground(m_window, dc, whole);
    m_themes.DrawBackground(m_theme, dc, BP_PUSHBUTTON, state, whole);
}

void CIconButton::PaintClassicFrame(HDC dc, RECT whole, const SLook& look) const {
    FillRect(dc, &whole, GetSysColorBrush(COLOR_BTNFACE));
    if (look.isDefault && !look.isDisabled) {
        Frame(dc, whole, COLOR_WINDOWFRAME);
        InflateRect(&whole, -1, -1);
    }
    RECT edge = whole;
    DrawFrameControl(dc, &edge, DFC_BUTTON, DFCS_BUTTONPUSH | (look.isPressed ? DFCS_PUSHED : 0U));
    if (look.isHot && !look.isDisabled && !look.isPressed) {
        RECT inner = whole;
        InflateRect(&inner, -2, -2);
        Frame(dc, inner, COLOR_HIGHLIGHT);
    }
}

int CIconButton::IconSizeFor(const SIZE& room, int textWidth) const {
    return ButtonIconSize(std::min<int>(room.cy, room.cx - textWidth));
}

void CIconButton::PaintContent(HDC dc, const RECT& content, const SLook& look) const {
    const SCaption caption(m_window, dc);
    const int padding = Scaled(m_window, kPadding);
    const int gap = caption.IsEmpty() || m_iconId == 0 ? 0 : Scaled(m_window, kGap);
    const LONG height = content.bottom - content.top;
    const SIZE room = {content.right - content.left - 2 * padding,
                       std::min<LONG>(height, Scaled(m_window, kLargestIcon))};
    m_icon.Load(m_iconId, IconSizeFor(room, gap + caption.size.cx));
    const int icon = m_icon.Size();
    const int width = icon + gap + caption.size.cx;
    RECT place = content;
    place.left += padding + IndentOf(room, width, icon, caption.IsEmpty());
    m_icon.Draw(dc, place.left, (content.top + content.bottom - icon) / 2, look.isDisabled);
    place.left += icon + gap;
    place.right -= padding;
    PaintText(dc, place, caption.text.data(), look);
}

/// Distance of the content from the left end of its room. Icons before a text line up in a column of buttons, unless
/// the text needs the room.
LONG CIconButton::IndentOf(const SIZE& room, int width, int icon, bool isIconAlone) const {
    const LONG spare = std::max<LONG>(room.cx - width, 0);
    const LONG axis = Scaled(m_window, kIconAxis - kEdge - kPadding) - icon / 2;
    return isIconAlone || icon == 0 ? spare / 2 : std::clamp<LONG>(axis, 0, spare);
}

void CIconButton::PaintText(HDC dc, const RECT& rectangle, const wchar_t* text, const SLook& look) const {
    const UINT format = DT_SINGLELINE | DT_VCENTER | DT_LEFT;
    if (m_theme != nullptr) {
        m_themes.DrawCaption(m_theme, dc, BP_PUSHBUTTON, look.isDisabled ? PBS_DISABLED : PBS_NORMAL, text, format,
                             rectangle);
        return;
    }
    SetBkMode(dc, TRANSPARENT);
    RECT place = rectangle;
    if (look.isDisabled && !IsHighContrast()) {
        RECT relief = rectangle;
        OffsetRect(&relief, 1, 1);
        SetTextColor(dc, GetSysColor(COLOR_BTNHIGHLIGHT));
        DrawTextW(dc, text, -1, &relief, format);
    }
    SetTextColor(dc, GetSysColor(look.isDisabled ? COLOR_GRAYTEXT : COLOR_BTNTEXT));
    DrawTextW(dc, text, -1, &place, format);
}

}  // namespace vantrel
