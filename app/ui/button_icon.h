// The icon of a button: a resource at one of its own sizes, in colour or greyed.
#pragma once

#include <windows.h>

#include <cstdint>
#include <vector>

namespace vantrel {

/// The largest size of the button icons that is not above `room` pixels; the smallest one if none fits.
int ButtonIconSize(int room);

class CButtonIcon {
public:
    CButtonIcon() = default;
    ~CButtonIcon();
    CButtonIcon(const CButtonIcon&) = delete;
    CButtonIcon& operator=(const CButtonIcon&) = delete;

    /// Loads an icon of the program's resources in `size` pixels. Nothing is drawn if there is no such icon.
    void Load(int iconId, int size);

    int Size() const { return m_icon != nullptr ? m_size : 0; }

    /// Draws the icon with its upper left corner at (x, y). A greyed icon is drawn without colour and half transparent.
    void Draw(HDC dc, int x, int y, bool isGreyed) const;

private:
    void DrawGreyed(HDC dc, int x, int y) const;
    void Grey(std::uint32_t* pixels) const;

    HICON m_icon = nullptr;
    int m_id = 0;
    int m_size = 0;
};

}  // namespace vantrel
