// The title effect: a picture under moving water, in a strip along the upper edge of the dialog.
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "app/ui/memory_bitmap.h"
#include "app/ui/ripple_field.h"

namespace vantrel {

/// The timer that drives the effect, and its period in milliseconds.
inline constexpr UINT_PTR kEffectTimer = 1971;
inline constexpr UINT kEffectPeriod = 30;

inline constexpr int kEffectWidth = 575;
inline constexpr int kEffectHeight = 330;

/// A drop that the pointer causes: a small one when it moves, a larger one for a click.
struct SRippleDrop {
    int radius;
    int depth;
};
inline constexpr SRippleDrop kMoveDrop = {5, 50};
inline constexpr SRippleDrop kClickDrop = {10, 200};

class CRippleEffect {
public:
    /// Loads the bitmap from the program's resources and stretches it to width x height. Returns false if it is missing
    /// or allocation fails; then nothing is painted.
    bool SetPicture(int bitmapId, int width, int height);

    bool HasPicture() const { return m_view != nullptr; }

    /// The resolution of the display, in dots per inch. The picture is stretched accordingly; all other positions are
    /// those of a display at 96 dpi.
    void SetResolution(int resolution) { m_resolution = resolution; }

    /// The rectangle of the picture in the dialog's client area. Its lower left corner is at (5, 80): point (x, y) of
    /// the client area is point (x - 5, 80 - y) of the picture, whose rows are counted from the bottom. The part above
    /// the client area is not visible.
    RECT Rectangle() const;

    /// Adds a drop at a point of the client area, in pixels of the display. Returns false if the point is outside the
    /// picture.
    bool DropAt(POINT point, const SRippleDrop& drop);

    /// Advances the simulation by one step.
    void Advance();

    /// Whether the water is at rest.
    bool IsAtRest() const { return m_field == std::nullopt || m_field->IsAtRest(); }

    const CRippleField* Field() const { return m_field ? &*m_field : nullptr; }

    /// Paints the picture as seen through the water at Rectangle() of the device context, stretched to the display.
    void Paint(HDC dc);

    /// The same in the dialog's client area, except over its controls.
    void PaintInto(HWND dialog);

private:
    int ToDisplay(LONG length) const { return MulDiv(length, m_resolution, USER_DEFAULT_SCREEN_DPI); }

    int m_resolution = USER_DEFAULT_SCREEN_DPI;
    std::optional<CRippleField> m_field;
    std::vector<std::uint32_t> m_picture;
    std::unique_ptr<CMemoryBitmap> m_view;
};

}  // namespace vantrel
