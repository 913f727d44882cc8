#include "app/ui/button_icon.h"

#include <algorithm>
#include <array>

#include "app/ui/memory_bitmap.h"

namespace vantrel {
namespace {

constexpr std::array kDrawnSizes = {64, 48, 40, 32, 24, 16};
constexpr std::uint32_t kGreyOpacity = 140;  // of 255

/// A pixel of the icon drawn on black and on white, from which its opacity follows.
struct SPixelOnGrounds {
    std::uint32_t onBlack;
    std::uint32_t onWhite;

    std::uint32_t Opacity() const {
        return 255U - ((onWhite >> 8 & 0xFFU) - std::min(onWhite >> 8 & 0xFFU, onBlack >> 8 & 0xFFU));
    }

    /// Perceived brightness, multiplied by the opacity.
    std::uint32_t Brightness() const {
        return ((onBlack >> 16 & 0xFFU) * 77 + (onBlack >> 8 & 0xFFU) * 150 + (onBlack & 0xFFU) * 29) >> 8;
    }
};

}  // namespace

int ButtonIconSize(int room) {
    for (const int size : kDrawnSizes) {
        if (size <= room) {
            return size;
        }
    }
    return kDrawnSizes.back();
}

CButtonIcon::~CButtonIcon() {
    if (m_icon != nullptr) {
        DestroyIcon(m_icon);
    }
}

void CButtonIcon::Load(int iconId, int size) {
    if (iconId == m_id && size == m_size) {
        return;
    }
    if (m_icon != nullptr) {
        DestroyIcon(m_icon);
    }
    m_id = iconId;
    m_size = size;
    m_icon = static_cast<HICON>(
        LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(iconId), IMAGE_ICON, size, size, LR_DEFAULTCOLOR));
}

void CButtonIcon::Draw(HDC dc, int x, int y, bool isGreyed) const {
    if (m_icon == nullptr) {
        return;
    }
    if (isGreyed) {
        DrawGreyed(dc, x, y);
    } else {
        DrawIconEx(dc, x, y, m_icon, m_size, m_size, 0, nullptr, DI_NORMAL);
    }
}

void CButtonIcon::Grey(std::uint32_t* pixels) const {
    const CMemoryBitmap onBlack(m_size, m_size);
    const CMemoryBitmap onWhite(m_size, m_size);
    if (onBlack.Pixels() == nullptr || onWhite.Pixels() == nullptr) {
        return;
    }
    PatBlt(onBlack.Dc(), 0, 0, m_size, m_size, BLACKNESS);
    PatBlt(onWhite.Dc(), 0, 0, m_size, m_size, WHITENESS);
    DrawIconEx(onBlack.Dc(), 0, 0, m_icon, m_size, m_size, 0, nullptr, DI_NORMAL);
    DrawIconEx(onWhite.Dc(), 0, 0, m_icon, m_size, m_size, 0, nullptr, DI_NORMAL);
    GdiFlush();
    for (int i = 0; i < m_size * m_size; ++i) {
        const SPixelOnGrounds pixel = {onBlack.Pixels()[i], onWhite.Pixels()[i]};
        const std::uint32_t grey = std::min(pixel.Brightness(), pixel.Opacity());
        pixels[i] = pixel.Opacity() << 24 | grey << 16 | grey << 8 | grey;
    }
}

void CButtonIcon::DrawGreyed(HDC dc, int x, int y) const {
    const CMemoryBitmap greyed(m_size, m_size);
    if (greyed.Pixels() == nullptr) {
        return;
    }
    Grey(greyed.Pixels());
    const BLENDFUNCTION blend = {AC_SRC_OVER, 0, static_cast<BYTE>(kGreyOpacity), AC_SRC_ALPHA};
    GdiAlphaBlend(dc, x, y, m_size, m_size, greyed.Dc(), 0, 0, m_size, m_size, blend);
}

}  // namespace vantrel
