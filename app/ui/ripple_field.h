// Water under a picture: a damped field of heights that drops disturb and that comes to rest again. Portable; the
// window shows it through CRippleEffect.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vantrel {

/// Heights over a grid of width x height points. Rows are counted as in the picture that is shown through the field.
class CRippleField {
public:
    /// A field at rest. Both lengths are at least 1.
    CRippleField(int width, int height);

    int Width() const { return m_width; }
    int Height() const { return m_height; }

    /// Raises a disc of `radius` points around (x, y) by `depth`; the parts outside the field are left out.
    void Drop(int x, int y, int radius, int depth);

    /// One step of time. The waves lose a part of their height at each step, and at least one unit, so that the field
    /// comes to rest.
    void Advance();

    bool IsAtRest() const { return m_isAtRest; }

    /// How much is moving: the sum of the squared heights and of their squared changes. 0 at rest; it swings within a
    /// wave, and falls over longer times.
    std::uint64_t Energy() const;

    /// Shows `picture` through the water: every pixel of `view` is taken where the slope of the water bends the sight
    /// to, and slopes are lit from one side. Both hold Width() x Height() pixels 0x00RRGGBB; nothing is shown when one
    /// holds less.
    void Render(std::span<const std::uint32_t> picture, std::span<std::uint32_t> view) const;

private:
    std::size_t IndexOf(int x, int y) const;
    std::int32_t Next(std::size_t index) const;

    int m_width;
    int m_height;
    bool m_isAtRest = true;
    std::vector<std::int32_t> m_heights;   // the border of one point around the grid stays at rest
    std::vector<std::int32_t> m_previous;  // the heights one step ago
};

}  // namespace vantrel
