// The rows of the picture and its view are stored bottom up, like those of the field.
#include "app/ui/ripple_effect.h"

namespace vantrel {
namespace {

constexpr int kEffectLeft = 5;     // x of the picture's left edge in the client area
constexpr int kEffectBottom = 80;  // y of the picture's lowest row in the client area

/// Stretches a bitmap resource over the whole target. Returns false if there is no such resource.
bool DrawResourceBitmap(int bitmapId, HDC target, int width, int height) {
    const auto bitmap = static_cast<HBITMAP>(
        LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(bitmapId), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION));
    if (bitmap == nullptr) {
        return false;
    }
    BITMAP facts = {};
    GetObjectW(bitmap, sizeof facts, &facts);
    const HDC source = CreateCompatibleDC(nullptr);
    const HGDIOBJ former = SelectObject(source, bitmap);
    SetStretchBltMode(target, HALFTONE);
    const BOOL isDrawn = StretchBlt(target, 0, 0, width, height, source, 0, 0, facts.bmWidth, facts.bmHeight, SRCCOPY);
    SelectObject(source, former);
    DeleteDC(source);
    DeleteObject(bitmap);
    GdiFlush();
    return isDrawn != FALSE;
}

}  // namespace

bool CRippleEffect::SetPicture(int bitmapId, int width, int height) {
    auto view = std::make_unique<CMemoryBitmap>(width, height, CMemoryBitmap::EOrder::BottomUp);
    if (view->Pixels() == nullptr || !DrawResourceBitmap(bitmapId, view->Dc(), width, height)) {
        return false;
    }
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    m_picture.assign(view->Pixels(), view->Pixels() + count);
    m_field.emplace(width, height);
    m_view = std::move(view);
    return true;
}

RECT CRippleEffect::Rectangle() const {
    if (!m_field) {
        return {};
    }
    const int bottom = kEffectBottom + 1;
    return {kEffectLeft, bottom - m_field->Height(), kEffectLeft + m_field->Width(), bottom};
}

bool CRippleEffect::DropAt(POINT point, const SRippleDrop& drop) {
    const RECT rectangle = Rectangle();
    point = {MulDiv(point.x, USER_DEFAULT_SCREEN_DPI, m_resolution),
             MulDiv(point.y, USER_DEFAULT_SCREEN_DPI, m_resolution)};
    if (PtInRect(&rectangle, point) == FALSE) {
        return false;
    }
    m_field->Drop(point.x - kEffectLeft, kEffectBottom - point.y, drop.radius, drop.depth);
    return true;
}

void CRippleEffect::Advance() {
    if (m_field) {
        m_field->Advance();
    }
}

void CRippleEffect::Paint(HDC dc) {
    if (!HasPicture()) {
        return;
    }
    GdiFlush();
    m_field->Render(m_picture, {m_view->Pixels(), m_picture.size()});
    const RECT rectangle = Rectangle();
    const int left = ToDisplay(rectangle.left);
    const int top = ToDisplay(rectangle.top);
    SetStretchBltMode(dc, m_resolution == USER_DEFAULT_SCREEN_DPI ? COLORONCOLOR : HALFTONE);
    StretchBlt(dc, left, top, ToDisplay(rectangle.right) - left, ToDisplay(rectangle.bottom) - top, m_view->Dc(), 0, 0,
               m_field->Width(), m_field->Height(), SRCCOPY);
}

void CRippleEffect::PaintInto(HWND dialog) {
    const HDC dc = GetDCEx(dialog, nullptr, DCX_CACHE | DCX_CLIPCHILDREN);
    if (dc != nullptr) {
        Paint(dc);
        ReleaseDC(dialog, dc);
    }
}

}  // namespace vantrel
