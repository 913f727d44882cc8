// A bitmap in memory with a device context for drawing and direct access to its pixels.
#pragma once

#include <windows.h>

#include <cstdint>

namespace vantrel {

/// Pixels are 0xAARRGGBB. Rows are counted from the top, or from the bottom for EOrder::BottomUp.
class CMemoryBitmap {
public:
    enum class EOrder { TopDown, BottomUp };

    CMemoryBitmap(int width, int height, EOrder order = EOrder::TopDown) : m_dc(CreateCompatibleDC(nullptr)) {
        BITMAPINFO info = {};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = width;
        info.bmiHeader.biHeight = order == EOrder::TopDown ? -height : height;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        info.bmiHeader.biCompression = BI_RGB;
        void* pixels = nullptr;
        m_bitmap = CreateDIBSection(m_dc, &info, DIB_RGB_COLORS, &pixels, nullptr, 0);
        m_pixels = static_cast<std::uint32_t*>(pixels);
        m_former = m_bitmap != nullptr ? SelectObject(m_dc, m_bitmap) : nullptr;
    }

    ~CMemoryBitmap() {
        if (m_bitmap != nullptr) {
            SelectObject(m_dc, m_former);
            DeleteObject(m_bitmap);
        }
        DeleteDC(m_dc);
    }

    CMemoryBitmap(const CMemoryBitmap&) = delete;
    CMemoryBitmap& operator=(const CMemoryBitmap&) = delete;

    HDC Dc() const { return m_dc; }

    /// Null if allocation failed. Call GdiFlush between drawing and reading.
    std::uint32_t* Pixels() const { return m_pixels; }

private:
    HDC m_dc;
    HBITMAP m_bitmap = nullptr;
    HGDIOBJ m_former = nullptr;
    std::uint32_t* m_pixels = nullptr;
};

}  // namespace vantrel
