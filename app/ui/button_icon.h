// The picture on a button: an icon of the resources at one of the sizes it was drawn for, in colour or greyed.
#pragma once

#include <windows.h>

#include <cstdint>
#include <vector>

namespace vantrel {

/// The largest size that button icons are drawn for and that is not above `room` pixels; the smallest when none fits.
int ButtonIconSize(int room);

class CButtonIcon {
public:
    CButtonIcon() = default;
    ~CButtonIcon();
    CButtonIcon(const CButtonIcon&) = delete;
    CButtonIcon& operator=(const CButtonIcon&) = delete;

    /// Loads the icon of the program's resources in `size` pixels; 0, or one that is not there, draws nothing.
    void Load(int iconId, int size);

    int Size() const { return m_icon != nullptr ? m_size : 0; }

    /// Draws with the upper left corner at (x, y). Greyed: without colour and half transparent, so that the drawing
    /// stays recognisable.
    void Draw(HDC dc, int x, int y, bool isGreyed) const;

private:
    void DrawGreyed(HDC dc, int x, int y) const;
    void Grey(std::uint32_t* pixels) const;

    HICON m_icon = nullptr;
    int m_id = 0;
    int m_size = 0;
};

}  // namespace vantrel
