// The title effect: a picture of the resources under moving water, in a strip along the upper edge of the dialog.
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

/// How strongly the pointer stirs the water: gently on its way, more with a click.
struct SRippleDrop {
    int radius;
    int depth;
};
inline constexpr SRippleDrop kMoveDrop = {5, 50};
inline constexpr SRippleDrop kClickDrop = {10, 200};

class CRippleEffect {
public:
    /// Takes the bitmap of the program's resources; false, and nothing is ever painted, when it is missing or there is
    /// no memory. A picture of another size is stretched to width x height.
    bool SetPicture(int bitmapId, int width, int height);

    bool HasPicture() const { return m_view != nullptr; }

    /// Where the picture lies in the dialog's client area. Its lower left corner stands at (5, 80), so that point (x,
    /// y) of the client area is point (x - 5, 80 - y) of the picture, whose rows are counted from the bottom. What lies
    /// above the client area is cut off: a strip of water is seen.
    RECT Rectangle() const;

    /// Lets a drop fall on a point of the client area; false when it lies outside the picture.
    bool DropAt(POINT point, const SRippleDrop& drop);

    /// One step of the water.
    void Advance();

    /// Whether the water has come to rest and the last painting shows it so.
    bool IsAtRest() const { return m_field == std::nullopt || m_field->IsAtRest(); }

    const CRippleField* Field() const { return m_field ? &*m_field : nullptr; }

    /// Paints the picture through the water at Rectangle() of the device context.
    void Paint(HDC dc);

    /// The same into the dialog's client area, but not over its controls.
    void PaintInto(HWND dialog);

private:
    std::optional<CRippleField> m_field;
    std::vector<std::uint32_t> m_picture;
    std::unique_ptr<CMemoryBitmap> m_view;
};

}  // namespace vantrel
